// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <QFile>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

using Upload = std::function<QString(MessengerAPI &, const QUrl &)>;

QString told(const QJsonObject &map) {
    return QString::fromUtf8(json::compact(map));
}
QString told(const std::optional<QJsonObject> &map) {
    return map ? told(*map) : u"absent"_s;
}
template <typename T>
QString resultOf(QCoro::Task<T> task) {
    const auto outcome = outcomeOf(std::move(task));
    return outcome.value ? told(*outcome.value) : outcome.failure;
}

QString voice(MessengerAPI &api, const QUrl &file) {
    return resultOf(api.sendVoiceMessage(u"3"_s, file, u"key-1"_s));
}
QString file(MessengerAPI &api, const QUrl &url) {
    return resultOf(api.uploadFile(u"3"_s, url));
}
QString transcript(MessengerAPI &api, const QUrl &url) {
    return resultOf(api.transcribeVoice(url));
}

constexpr auto chatField = "--B\r\nContent-Disposition: form-data; name=\"chat_id\"\r\n\r\n3\r\n";

// Every byte value, a line that looks like a boundary, no line end at the end.
QByteArray everything() {
    QByteArray bytes("--Boundary-\r\n--\r\n");
    for (int value = 0; value < 256; ++value)
        bytes.append(char(value));
    return bytes;
}

} // namespace

class TestUploads : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_server.reset();
        m_signedIn = std::make_unique<SignedInSession>();
        m_api = std::make_unique<MessengerAPI>(m_server.base(), m_signedIn->session);
    }
    void bodiesAreExact_data();
    void bodiesAreExact();
    void answers_data();
    void answers();
    void unreadableFilesSendNothing();

private:
    QUrl fileNamed(const QString &name, const QByteArray &bytes) {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("no test file");
        return QUrl::fromLocalFile(file.fileName());
    }

    QTemporaryDir m_folder;
    ScriptedHttpServer m_server;
    std::unique_ptr<SignedInSession> m_signedIn;
    std::unique_ptr<MessengerAPI> m_api;
};

void TestUploads::bodiesAreExact_data() {
    QTest::addColumn<Upload>("upload");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("authorisation");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QString>("boundary");
    const QByteArray token("Bearer t0k");
    const QString uuid = u"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"_s;
    const auto part = [](const char *name, const char *type) {
        return QByteArray("--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"") + name +
               "\"\r\nContent-Type: " + type + "\r\n\r\n";
    };
    QTest::newRow("voice") << Upload(voice) << "r.m4a" << everything()
                           << QByteArray("/api/messenger/chats/3/voice-messages")
                           << chatField + part("voice.m4a", "audio/mp4") << token << QByteArray("key-1")
                           << "Boundary-" + uuid;
    QTest::newRow("file") << Upload(file) << "отчёт 1.pdf" << everything()
                          << QByteArray("/api/messenger/files/upload")
                          << chatField + part("отчёт 1.pdf", "application/octet-stream") << QByteArray()
                          << QByteArray() << "Boundary-" + uuid;
    QTest::newRow("an empty file with a name that breaks out")
        << Upload(file) << "a\"\r\nX: y" << QByteArray() << QByteArray("/api/messenger/files/upload")
        << chatField + part("a%22%0D%0AX: y", "application/octet-stream") << QByteArray() << QByteArray()
        << "Boundary-" + uuid;
    QTest::newRow("transcript") << Upload(transcript) << "v.m4a" << everything()
                                << QByteArray("/api/messenger/voice/transcribe") << part("v.m4a", "audio/m4a")
                                << token << QByteArray() << uuid;
}

void TestUploads::bodiesAreExact() {
    QFETCH(Upload, upload);
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, head);
    QFETCH(QString, boundary);
    upload(*m_api, fileNamed(name, content));
    const RecordedRequest sent = m_server.lastRequest();
    QCOMPARE(sent.method, "POST");
    QTEST(sent.target, "target");
    const QString type = QString::fromLatin1(sent.headers.value("content-type"));
    const QString prefix = u"multipart/form-data; boundary="_s;
    QVERIFY(type.startsWith(prefix));
    const QString used = type.mid(prefix.size());
    QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(boundary)).match(used).hasMatch(),
             qPrintable(used));
    QCOMPARE(sent.body, head.replace("--B\r\n", "--" + used.toLatin1() + "\r\n") + content + "\r\n--" +
                            used.toLatin1() + "--\r\n");
    QTEST(sent.headers.value("authorization"), "authorisation");
    QTEST(sent.headers.value("idempotency-key"), "key");
}

void TestUploads::answers_data() {
    QTest::addColumn<Upload>("upload");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("result");
    QTest::newRow("voice, good") << Upload(voice) << 201 << QByteArray(R"({"message":{"id":"m"}})")
                                 << R"({"id":"m"})";
    QTest::newRow("voice, no message") << Upload(voice) << 200 << QByteArray("{}") << "api 500";
    QTest::newRow("voice, no object") << Upload(voice) << 200 << QByteArray("[]") << "api 500";
    QTest::newRow("voice, no JSON") << Upload(voice) << 200 << QByteArray() << "json";
    QTest::newRow("voice, refused") << Upload(voice) << 413 << QByteArray("{}") << "api 413";
    QTest::newRow("file, good") << Upload(file) << 200 << QByteArray(R"({"url":"u"})") << R"({"url":"u"})";
    QTest::newRow("file, no object") << Upload(file) << 200 << QByteArray("[]") << "absent";
    QTest::newRow("file, no JSON") << Upload(file) << 200 << QByteArray("<html>") << "json";
    QTest::newRow("transcript, good")
        << Upload(transcript) << 200 << QByteArray(R"({"text":"t"})") << R"({"text":"t"})";
    QTest::newRow("transcript, no object") << Upload(transcript) << 200 << QByteArray("1") << "api 500";
    QTest::newRow("transcript, not offered") << Upload(transcript) << 503 << QByteArray("{}") << "api 503";
}

void TestUploads::answers() {
    QFETCH(Upload, upload);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server.answerNext(ScriptedAnswer::of(status, body));
    QTEST(upload(*m_api, fileNamed(u"x"_s, "bytes")), "result");
}

void TestUploads::unreadableFilesSendNothing() {
    for (const Upload &upload : {Upload(voice), Upload(file), Upload(transcript)}) {
        const QString missing = upload(*m_api, QUrl::fromLocalFile(m_folder.filePath("missing")));
        QVERIFY2(missing.contains("No such file"), qPrintable(missing));
        QVERIFY(!upload(*m_api, QUrl::fromLocalFile(m_folder.path())).isEmpty());
        QVERIFY(!upload(*m_api, QUrl("https://far.example/file")).isEmpty());
    }
    QCOMPARE(m_server.requests().size(), 0);
}

ORVANE_TEST_MAIN(TestUploads)

#include "tst_uploads.moc"

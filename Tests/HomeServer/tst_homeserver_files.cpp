// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QDir>
#include <QFile>
#include <QtEndian>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

const Headers form{{"Content-Type", "multipart/form-data; boundary=B-1"}};
const QByteArray end = "\r\n--B-1--\r\n";

QByteArray field(const QByteArray &name, const QByteArray &value) {
    return "--B-1\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value + "\r\n";
}

QByteArray file(const QByteArray &name, const QByteArray &bytes) {
    return "--B-1\r\nContent-Disposition: form-data; name=\"file\"; filename=\"" + name +
           "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes;
}

} // namespace

class FilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void uploadComesBack();
    void namesAreNoPaths_data();
    void namesAreNoPaths();
    void activeContentLosesItsType_data();
    void activeContentLosesItsType();
    void brokenForms_data();
    void brokenForms();
    void storeHasABound();
    void voiceMessage();
    void recordingGoesWithItsMessage();
    void voiceIsForMembers();
};

void FilesTest::uploadComesBack() {
    Site site;
    Person anna(site, u"anna"_s);
    // Bytes that look like the form's own marks.
    const QByteArray bytes = QByteArray("\x89PNG\r\n\x1a\n\0--B-2\r\n--B", 19) + QByteArray(100'000, '\xff');
    const Reply reply =
        site.send("POST", u"files/upload"_s, field("chat_id", "lobby") + file("cat.png", bytes) + end, form);
    QCOMPARE(reply.status, 201);
    QCOMPARE(reply.json["filename"_L1], QJsonValue("cat.png"_L1));
    QCOMPARE(reply.json["mime_type"_L1], QJsonValue("image/png"_L1));
    QCOMPARE(reply.json["size"_L1], QJsonValue(bytes.size()));
    const QString path = reply.json["path"_L1].toString();
    QVERIFY(!path.contains(u':'));
    site.restart();
    const Reply back = site.send("GET", u'/' + path);
    QCOMPARE(back.status, 200);
    QCOMPARE(back.body, bytes);
    QCOMPARE(site.send("GET", u"files/unknown"_s).status, 404);
    QCOMPARE(site.send("GET", u"files/..%2Fhomeserver.sqlite"_s).status, 404);
}

void FilesTest::namesAreNoPaths_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("climbing") << QByteArray("../../etc/passwd") << u"passwd"_s;
    QTest::newRow("absolute") << QByteArray("/etc/shadow") << u"shadow"_s;
    QTest::newRow("backslashes") << QByteArray("C:\\x\\evil.exe") << u"evil.exe"_s;
    QTest::newRow("only dots") << QByteArray("..") << u"file"_s;
    QTest::newRow("nothing") << QByteArray("") << u"file"_s;
    QTest::newRow("separator of fields") << QByteArray("a:b.txt") << u"a_b.txt"_s;
    QTest::newRow("control characters") << QByteArray("a\x1b[2Jb") << u"a_[2Jb"_s;
    QTest::newRow("turned around") << QByteArray("cod\u202egpj.exe") << u"cod_gpj.exe"_s;
    QTest::newRow("very long") << QByteArray(3000, 'n') << QString(200, u'n');
    QTest::newRow("Russian") << QByteArray("отчёт.pdf") << u"отчёт.pdf"_s;
}

void FilesTest::namesAreNoPaths() {
    QFETCH(QByteArray, name);
    QFETCH(QString, shown);
    Site site;
    const Reply reply =
        site.send("POST", u"files/upload"_s, field("chat_id", "lobby") + file(name, "x") + end, form);
    QCOMPARE(reply.json["filename"_L1].toString(), shown);
    // One file more, in the folder for uploads, under a name of the server's own.
    const QStringList files = QDir(site.dataFolder() + u"/files"_s).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QCOMPARE(files.first().size(), 36);
}

void FilesTest::activeContentLosesItsType_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("page") << QByteArray("a.html") << QByteArray("<html><script>1</script>");
    QTest::newRow("drawing") << QByteArray("a.svg")
                             << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
    QTest::newRow("script") << QByteArray("a.js") << QByteArray("alert(1)");
}

void FilesTest::activeContentLosesItsType() {
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, bytes);
    Site site;
    const Reply reply =
        site.send("POST", u"files/upload"_s, field("chat_id", "lobby") + file(name, bytes) + end, form);
    QNetworkReply *download = site.start("GET", u'/' + reply.json["path"_L1].toString());
    QString type;
    connect(download, &QNetworkReply::finished, this,
            [&] { type = download->header(QNetworkRequest::ContentTypeHeader).toString(); });
    QCOMPARE(finish(download).body, bytes);
    QCOMPARE(type, u"application/octet-stream"_s);
}

void FilesTest::brokenForms_data() {
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const QByteArray type = form[0].second;
    const QByteArray good = field("chat_id", "lobby") + file("a", "x") + end;
    QTest::newRow("unknown chat") << type << field("chat_id", "nowhere") + file("a", "x") + end << 404;
    QTest::newRow("no chat") << type << file("a", "x") + end << 404;
    QTest::newRow("no file") << type << field("chat_id", "lobby") + end << 400;
    QTest::newRow("empty file") << type << field("chat_id", "lobby") + file("a", "") + end << 400;
    QTest::newRow("cut off") << type << good.chopped(12) << 400;
    QTest::newRow("only the end") << type << QByteArray("--B-1--\r\n") << 400;
    QTest::newRow("part without headers") << type << QByteArray("--B-1\r\nxyz\r\n--B-1--\r\n") << 400;
    QTest::newRow("part without a name")
        << type << QByteArray("--B-1\r\nX: y\r\n\r\nxyz\r\n--B-1--\r\n") << 400;
    QTest::newRow("another boundary") << QByteArray("multipart/form-data; boundary=C") << good << 400;
    QTest::newRow("no boundary") << QByteArray("multipart/form-data") << good << 400;
    QTest::newRow("hundred parts") << type << field("a", "b").repeated(100) + file("a", "x") + end << 400;
    QTest::newRow("JSON instead") << QByteArray("application/json") << QByteArray("{}") << 400;
    QTest::newRow("empty") << type << QByteArray() << 400;
    QTest::newRow("quoted boundary") << QByteArray("multipart/form-data; boundary=\"B-1\"") << good << 201;
}

void FilesTest::brokenForms() {
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Site site;
    const Reply reply = site.send("POST", u"files/upload"_s, body, {{"Content-Type", type}});
    QVERIFY2(reply.status == status, reply.body.constData());
    QCOMPARE(QDir(site.dataFolder() + u"/files"_s).entryList(QDir::Files).size(), status == 201 ? 1 : 0);
}

void FilesTest::storeHasABound() {
    Site site([](Options &options) { options.maxStoredBytes = 1000; });
    const auto upload = [&](int size) {
        return site
            .send("POST", u"files/upload"_s,
                  field("chat_id", "lobby") + file("a", QByteArray(size, 'x')) + end, form)
            .status;
    };
    QCOMPARE(upload(600), 201);
    QCOMPARE(upload(600), 507);
    site.restart(); // and it counts what is there
    QCOMPARE(upload(600), 507);
    QCOMPARE(upload(400), 201);
}

void FilesTest::voiceMessage() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Listener berts(site, bert);
    // The head of a recording: 12.5 s in units of 1/16000 s.
    QByteArray bytes(200, '\0');
    bytes.replace(100, 4, "mvhd");
    qToBigEndian<quint32>(16'000, bytes.data() + 116);
    qToBigEndian<quint32>(200'000, bytes.data() + 120);
    Headers headers = form;
    headers.emplaceBack("Idempotency-Key", "V");
    const QByteArray body = field("chat_id", "lobby") + file("voice.m4a", bytes) + end;
    const Reply reply = anna.send("POST", u"chats/lobby/voice-messages"_s, body, headers);
    QCOMPARE(reply.status, 201);
    const QStringList parts = reply.json["message"_L1]["content"_L1].toString().split(u':');
    QCOMPARE(parts.size(), 3);
    QCOMPARE(parts[2], u"12.5"_s);
    QCOMPARE(berts.next(u"messenger_message"_s)["message"_L1]["type"_L1], QJsonValue("voice"_L1));
    QCOMPARE(anna.send("POST", u"chats/lobby/voice-messages"_s, body, headers).body, reply.body);
    QCOMPARE(anna.messages(lobby()).size(), 1);
    const Reply back = bert.get(u"voice/lobby/%1.m4a"_s.arg(parts[1]));
    QCOMPARE(back.body, bytes);
    QCOMPARE(bert.get(u"voice/lobby/%1"_s.arg(parts[1])).status, 404);
    QCOMPARE(anna.send("POST", u"voice/transcribe"_s, file("voice.m4a", bytes) + end, form).error(),
             u"ai_unavailable"_s);
}

void FilesTest::recordingGoesWithItsMessage() {
    Site site;
    Person anna(site, u"anna"_s);
    const auto files = [&] { return QDir(site.dataFolder() + u"/files"_s).entryList(QDir::Files).size(); };
    const auto record = [&] {
        const QByteArray body = file("voice.m4a", "sound") + end;
        return anna.send("POST", u"chats/lobby/voice-messages"_s, body, form).json["message"_L1].toObject();
    };
    const QJsonObject first = record();
    record();
    site.send("POST", u"files/upload"_s, field("chat_id", "lobby") + file("a", "x") + end, form);
    QCOMPARE(files(), 3);
    anna.send("DELETE", u"messages/"_s + first["id"_L1].toString());
    QCOMPARE(files(), 2);
    QCOMPARE(anna.get(u"voice/lobby/%1.m4a"_s.arg(first["content"_L1].toString().section(u':', 1, 1))).status,
             404);
    // What a crash left behind is gone after the next start.
    QFile left(site.dataFolder() + u"/files/left-behind"_s);
    QVERIFY(left.open(QIODevice::WriteOnly));
    left.close();
    site.restart();
    QCOMPARE(files(), 2);
    anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})");
    QCOMPARE(files(), 1);
}

void FilesTest::voiceIsForMembers() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString chat = anna.groupWith({});
    const QByteArray body = file("voice.m4a", "sound") + end;
    const QString path = u"chats/%1/voice-messages"_s.arg(chat);
    QCOMPARE(bert.send("POST", path, body, form).status, 403);
    QCOMPARE(anna.send("POST", path, field("chat_id", "lobby") + body, form).status, 400);
    const QString id =
        anna.send("POST", path, body, form).json["message"_L1]["content"_L1].toString().section(u':', 1, 1);
    QCOMPARE(bert.get(u"voice/%1/%2.m4a"_s.arg(chat, id)).status, 403);
    QCOMPARE(bert.get(u"voice/lobby/%1.m4a"_s.arg(id)).status, 404);
    QCOMPARE(site.send("GET", u"files/"_s + id).status, 404); // no way round
    QCOMPARE(anna.get(u"voice/%1/%2.m4a"_s.arg(chat, id)).body, QByteArray("sound"));
}

QTEST_GUILESS_MAIN(FilesTest)
#include "tst_homeserver_files.moc"

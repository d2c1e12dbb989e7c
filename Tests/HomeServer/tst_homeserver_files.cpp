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

const QByteArray toLobby = field("chat_id", "lobby");

} // namespace

class FilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void uploadComesBack() {
        Company c;
        c.anna.say(lobby(), u"hi"_s);
        // Bytes that look like the form's own marks.
        const QByteArray bytes =
            QByteArray("\x89PNG\r\n\x1a\n\0--B-2\r\n--B", 19) + QByteArray(100'000, '\xff');
        const Reply reply = upload(c.site, file("cat.png", bytes));
        QCOMPARE(reply.status, 201);
        QCOMPARE(reply.text("filename"), u"cat.png"_s);
        QCOMPARE(reply.text("mime_type"), u"image/png"_s);
        QCOMPARE(reply.at("size"), QJsonValue(bytes.size()));
        const QString path = reply.text("path");
        QVERIFY(!path.contains(u':'));
        c.site.restart();
        const Reply back = c.site.send("GET", u'/' + path);
        QCOMPARE(back.status, 200);
        QCOMPARE(back.body, bytes);
        QCOMPARE(c.site.send("GET", u"files/unknown"_s).status, 404);
        QCOMPARE(c.site.send("GET", u"files/..%2Fhomeserver.sqlite"_s).status, 404);
    }

    void namesAreNoPaths() {
        Company c;
        c.anna.say(lobby(), u"hi"_s);
        for (const auto &[name, shown] : {std::pair(QByteArray("../../etc/passwd"), u"passwd"_s),
                                          {"/etc/shadow", u"shadow"_s},
                                          {"C:\\x\\evil.exe", u"evil.exe"_s},
                                          {"..", u"file"_s},
                                          {"", u"file"_s},
                                          {"a:b.txt", u"a_b.txt"_s},
                                          {"a\x1b[2Jb", u"a_[2Jb"_s},
                                          {"cod\u202egpj.exe", u"cod_gpj.exe"_s},
                                          {QByteArray(3000, 'n'), QString(200, u'n')},
                                          {"a; filename=b.txt", u"a; filename=b.txt"_s},
                                          {"a\\\"b\\\\c;.txt", u"c;.txt"_s},
                                          {"a\\\"b;.txt", u"a\"b;.txt"_s},
                                          {"отчёт.pdf", u"отчёт.pdf"_s}})
            QCOMPARE(upload(c.site, file(name, "x")).text("filename"), shown);
        // In the folder for uploads alone, under names of the server's own.
        const QStringList files = stored(c.site);
        QCOMPARE(files.size(), 13);
        for (const QString &name : files)
            QCOMPARE(name.size(), 36);
    }

    void activeContentLosesItsType() {
        Company c;
        c.anna.say(lobby(), u"hi"_s);
        for (const auto &[name, bytes] : {std::pair("a.html", "<html><script>1</script>"),
                                          {"a.svg", "<svg xmlns=\"http://www.w3.org/2000/svg\"/>"},
                                          {"a.js", "alert(1)"}}) {
            const QString path = u'/' + upload(c.site, file(name, bytes)).text("path");
            QNetworkReply *download = c.site.start("GET", path);
            QString type;
            connect(download, &QNetworkReply::finished, this,
                    [&] { type = download->header(QNetworkRequest::ContentTypeHeader).toString(); });
            QCOMPARE(finish(download).body, QByteArray(bytes));
            QCOMPARE(type, u"application/octet-stream"_s);
        }
    }

    void brokenForms() {
        Company c;
        c.anna.say(lobby(), u"hi"_s);
        const QByteArray type = form[0].second;
        const QByteArray good = toLobby + file("a", "x") + end;
        struct Form {
            QByteArray type;
            QByteArray body;
            int status = 400;
        };
        for (const Form &row : {Form{type, field("chat_id", "nowhere") + file("a", "x") + end, 404},
                                {type, file("a", "x") + end, 404},
                                {type, toLobby + end},
                                {type, toLobby + file("a", "") + end},
                                {type, good.chopped(12)},
                                {type, "--B-1--\r\n"},
                                {type, "--B-1\r\nxyz\r\n--B-1--\r\n"},
                                {type, "--B-1\r\nX: y\r\n\r\nxyz\r\n--B-1--\r\n"},
                                {"multipart/form-data; boundary=C", good},
                                {"multipart/form-data", good},
                                {type, field("a", "b").repeated(100) + file("a", "x") + end},
                                {"application/json", "{}"},
                                {type, {}}}) {
            const Reply reply =
                c.site.send("POST", u"files/upload"_s, row.body, {{"Content-Type", row.type}});
            QVERIFY2(reply.status == row.status, row.type + row.body.left(200) + reply.body);
        }
        QVERIFY(stored(c.site).isEmpty());
        const Headers quoted{{"Content-Type", "multipart/form-data; boundary=\"B-1\""}};
        QCOMPARE(c.site.send("POST", u"files/upload"_s, good, quoted).status, 201);
    }

    void storeHasABound() {
        Company c([](Options &options) { options.maxStoredBytes = 1000; });
        c.anna.say(lobby(), u"hi"_s);
        const auto uploaded = [&](int size) {
            return upload(c.site, file("a", QByteArray(size, 'x'))).status;
        };
        QCOMPARE(uploaded(600), 201);
        QCOMPARE(uploaded(600), 507);
        c.site.restart(); // and it counts what is there
        QCOMPARE(uploaded(600), 507);
        QCOMPARE(uploaded(400), 201);
    }

    void voiceMessage() {
        Company c;
        Listener berts(c.site, c.bert);
        // The head of a recording: 12.5 s in units of 1/16000 s.
        QByteArray bytes(200, '\0');
        bytes.replace(100, 4, "mvhd");
        qToBigEndian<quint32>(16'000, bytes.data() + 116);
        qToBigEndian<quint32>(200'000, bytes.data() + 120);
        Headers headers = form;
        headers.emplaceBack("Idempotency-Key", "V");
        const QByteArray body = field("chat_id", c.chat.toUtf8()) + file("voice.m4a", bytes) + end;
        const QString path = u"chats/%1/voice-messages"_s.arg(c.chat);
        const Reply reply = c.anna.send("POST", path, body, headers);
        QCOMPARE(reply.status, 201);
        const QStringList parts = reply.text("message.content").split(u':');
        QCOMPARE(parts.size(), 3);
        QCOMPARE(parts[2], u"12.5"_s);
        QCOMPARE(valueAt(berts.next(u"messenger_message"_s), "message.type"), QJsonValue("voice"_L1));
        QCOMPARE(c.anna.send("POST", path, body, headers).body, reply.body);
        QCOMPARE(c.anna.messages(c.chat).size(), 1);
        QCOMPARE(c.bert.get(u"voice/%1/%2.m4a"_s.arg(c.chat, parts[1])).body, bytes);
        QCOMPARE(c.bert.get(u"voice/%1/%2"_s.arg(c.chat, parts[1])).status, 404);
        QCOMPARE(c.anna.send("POST", u"voice/transcribe"_s, file("voice.m4a", bytes) + end, form).error(),
                 u"ai_unavailable"_s);
        // For members alone, in its own chat, and no way round.
        QCOMPARE(c.carl.send("POST", path, body, form).status, 403);
        QCOMPARE(c.anna.send("POST", path, toLobby + file("voice.m4a", "x") + end, form).status, 400);
        QCOMPARE(c.carl.get(u"voice/%1/%2.m4a"_s.arg(c.chat, parts[1])).status, 403);
        QCOMPARE(c.carl.get(u"voice/lobby/%1.m4a"_s.arg(parts[1])).status, 404);
        QCOMPARE(c.site.send("GET", u"files/"_s + parts[1]).status, 404);
    }

    void recordingGoesWithItsMessage() {
        Company c;
        const auto record = [&] {
            const QByteArray body = file("voice.m4a", "sound") + end;
            return c.anna.send("POST", u"chats/lobby/voice-messages"_s, body, form);
        };
        const Reply first = record();
        record();
        QCOMPARE(upload(c.site, file("a", "x")).status, 201);
        QCOMPARE(stored(c.site).size(), 3);
        c.anna.send("DELETE", u"messages/"_s + first.text("message.id"));
        QCOMPARE(stored(c.site).size(), 2);
        const QString id = first.text("message.content").section(u':', 1, 1);
        QCOMPARE(c.anna.get(u"voice/lobby/%1.m4a"_s.arg(id)).status, 404);
        // What a crash left behind is gone after the next start.
        QFile left(c.site.dataFolder() + u"/files/left-behind"_s);
        QVERIFY(left.open(QIODevice::WriteOnly));
        left.close();
        c.site.restart();
        QCOMPARE(stored(c.site).size(), 2);
        c.anna.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})");
        QCOMPARE(stored(c.site).size(), 1);
    }

private:
    static Reply upload(Site &site, const QByteArray &part) {
        return site.send("POST", u"files/upload"_s, toLobby + part + end, form);
    }
    static QStringList stored(const Site &site) {
        return QDir(site.dataFolder() + u"/files"_s).entryList(QDir::Files);
    }
};

QTEST_GUILESS_MAIN(FilesTest)
#include "tst_homeserver_files.moc"

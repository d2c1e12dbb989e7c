// SPDX-License-Identifier: MIT
#include "LocalNetwork/FrameReader.h"
#include "LocalNetwork/LanFrames.h"
#include "LocalNetwork/LanRules.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QJsonDocument>

using namespace orvane;

namespace {

constexpr qsizetype mebibyte = 1024 * 1024;

QByteArrayList fed(FrameReader &reader, const QByteArray &bytes) {
    QByteArrayList bodies;
    reader.append(bytes);
    while (const auto body = reader.next())
        bodies.append(body->toByteArray());
    return bodies;
}

QByteArray bytes(const char *hex) {
    return QByteArray::fromHex(hex);
}

} // namespace

class TestLanForms : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void privateAddresses() {
        for (const char *ip : {"10.0.0.1", "10.999.1.1", "192.168.0.0", "172.16.0.1", "172.31.255.1",
                               "10..0.0.1", "10.x.0.0.1", ".10.0.0.1.", "10.-1.+2.0"})
            QVERIFY2(lan::isPrivateLAN(ip), ip);
        for (const char *ip : {"172.15.0.1", "172.32.0.1", "192.169.0.1", "193.168.0.1", "127.0.0.1",
                               "8.8.8.8", "169.254.1.1", "10.0.0", "10.0.0.0.1", "10", "", "10,0,0,1",
                               "0xa.0.0.1", "fe80::1", "10.99999999999999999999.0.1"})
            QVERIFY2(!lan::isPrivateLAN(ip), ip);
    }

    void theFirstPrivateAddressOfHardwareCounts() {
        const auto check = [](const QList<InterfaceAddress> &interfaces, const QString &answer) {
            IN_ROW(answer.toUtf8());
            QCOMPARE(lan::localLANIP(interfaces).value_or("none"), answer);
        };
        check({{"lo0", "127.0.0.1"}, {"en5", "172.20.1.4"}}, "172.20.1.4");
        check({{"en1", "10.0.0.2"}, {"en0", "10.0.0.1"}}, "10.0.0.2");
        check({{"en0", "1.2.3.4"}, {"enx1", "192.168.1.9"}}, "192.168.1.9");
        check({{"docker0", "172.17.0.1"}, {"Een0", "10.0.0.1"}}, "none");
        check({}, "none");
    }

    void onlyPrivateAddressesAreDialled() {
        for (const char *host : {"10.0.0.0", "10.255.255.255", "172.16.0.1", "172.31.255.254", "192.168.0.1"})
            QVERIFY2(lan::mayBeDialled(host), host);
        const QByteArray others =
            "8.8.8.8|9.255.255.255|11.0.0.0|172.15.255.255|172.32.0.0|192.167.0.1|192.169.0.0|"
            "127.0.0.1|169.254.1.1|0.0.0.0|255.255.255.255|10.999.1.1|10.1.1.1.evil.example|"
            "10.1.1.1 |10.1.1.1:80|10.1|10.1.1|010.1.1.1|0x0a.1.1.1|167772161|10.1.1.-1|"
            "10..1.1.1|::ffff:10.1.1.1|fe80::1|localhost|peer.example|";
        for (const QByteArray &host : others.split('|'))
            QVERIFY2(!lan::mayBeDialled(host), host);
    }

    void oneOfTwoDials() {
        const auto check = [](const char *own, const char *peer, bool dials) {
            IN_ROW(QByteArray(own) + " and " + peer);
            QCOMPARE(lan::dials(own, peer), dials);
        };
        check("10", "9", true);
        check("9", "10", false);
        check("100", "99", true);
        check("100", "1000", true);
        check("100", "1", false);
        check("100", "100", false);
        // Nobody is signed in.
        check("0", "7", true);
    }

    void framesAreCutWhereverReadsEnd() {
        const auto check = [](const char *name, const QByteArrayList &reads,
                              const QList<QByteArrayList> &bodies) {
            IN_ROW(name);
            FrameReader reader;
            QList<QByteArrayList> got;
            for (const QByteArray &read : reads)
                got.append(fed(reader, bytes(read)));
            QCOMPARE(got, bodies);
        };
        check("two in one read", {"0000000161 000000026263"}, {{"a", "bc"}});
        check("one over three reads", {"000000", "036162", "63"}, {{}, {}, {"abc"}});
        check("three bytes are no length", {"000000"}, {{}});
        check("empty bodies", {"00000000 00000000 0000000161"}, {{"", "", "a"}});
        check("a length with its high bit set", {"ffffffff61", "0000000162"}, {{}, {}});
        check("a frame and the head of the next", {"0000000161 0000", "000162 00"}, {{"a"}, {"b"}});
        check("an empty read", {"", "0000000161", ""}, {{}, {"a"}, {}});
    }

    void everySplitGivesTheSameFrames() {
        const QByteArray stream = bytes("00000000 00000003616263 0000000164 000000050000000102 00");
        const QByteArrayList expected{"", "abc", "d", bytes("0000000102")};
        for (qsizetype first = 0; first <= stream.size(); ++first) {
            for (qsizetype second = first; second <= stream.size(); ++second) {
                FrameReader reader;
                QByteArrayList bodies = fed(reader, stream.first(first));
                bodies += fed(reader, stream.mid(first, second - first));
                bodies += fed(reader, stream.mid(second));
                QCOMPARE(bodies, expected);
            }
        }
    }

    void memoryFollowsWhatArrives() {
        FrameReader reader;
        QVERIFY(fed(reader, bytes("ffffffff")).isEmpty());
        const QByteArray read(64 * 1024, 'x');
        for (qsizetype arrived = read.size(); arrived <= 8 * mebibyte; arrived += read.size()) {
            QVERIFY(fed(reader, read).isEmpty());
            QVERIFY(reader.capacity() <= 2 * arrived + mebibyte);
        }
        reader.clear();
        QCOMPARE(reader.capacity(), 0);
        QCOMPARE(fed(reader, bytes("0000000161")), QByteArrayList{"a"});
    }

    void aLargeFrameIsGivenBack() {
        const QByteArray body(64 * mebibyte, 'x');
        FrameReader reader;
        QVERIFY(fed(reader, bytes("04000000")).isEmpty());
        const qsizetype read = 64 * 1024;
        for (qsizetype at = 0; at + read < body.size(); at += read)
            QVERIFY(fed(reader, body.mid(at, read)).isEmpty());
        // The last read also brings a byte of the next frame, which is all that stays.
        QVERIFY(fed(reader, body.last(read) + '\0') == QByteArrayList{body});
        QVERIFY(reader.capacity() < 1024);
        QCOMPARE(fed(reader, bytes("00000161")), QByteArrayList{"a"});
    }

    void bodiesSayHelloOrMessageOrNothing() {
        const auto check = [](const char *name, const QByteArray &body, const QString &said = "") {
            IN_ROW(name);
            const lan::Frame frame = lan::parseFrame(body);
            QString got;
            if (const auto *hello = std::get_if<lan::Hello>(&frame))
                got = "hello " + hello->userId;
            else if (const auto *message = std::get_if<lan::Message>(&frame))
                got = message->chatId + " " + QJsonDocument(message->message).toJson(QJsonDocument::Compact);
            QCOMPARE(got, said);
        };
        check("hello", R"({"type":"hello","user_id":"10","device_id":"dev_1"})", "hello 10");
        check("hello of a stranger version", R"( {"v":2,"user_id":"","type":"hello"} )", "hello ");
        check("hello with a number", R"({"type":"hello","user_id":10})");
        check("hello without an id", R"({"type":"hello","chat_id":"c","message":{}})");
        check("message", R"({"type":"message","chat_id":"c","message":{"id":"m"}})", R"(c {"id":"m"})");
        check("message of nothing", R"({"type":"message","chat_id":"","message":{}})", " {}");
        check("message without a chat", R"({"type":"message","message":{}})");
        check("chat as a number", R"({"type":"message","chat_id":1,"message":{}})");
        check("message as a text", R"({"type":"message","chat_id":"c","message":"{}"})");
        check("another type", R"({"type":"bye","user_id":"1","chat_id":"c","message":{}})");
        check("type as a number", R"({"type":1,"user_id":"1"})");
        check("a list", R"([{"type":"hello","user_id":"1"}])");
        check("no bytes", "");
        check("two objects", R"({"type":"hello","user_id":"1"}{})");
        check("no UTF-8", "{\"type\":\"hello\",\"user_id\":\"\xff\xc0\"}");
        check("a NUL", QByteArray("{\"type\":\"hello\",\"user_id\":\"1\"}\0", 32));
        check("deep", QByteArray(R"({"type":"message","chat_id":"c","message":)") + QByteArray(100'000, '['));
        check("deep and whole", R"({"type":"message","chat_id":"c","message":{"a":)" +
                                    QByteArray(100'000, '[') + QByteArray(100'000, ']') + "}}");
    }

    void whatIsSentIsAFrameOfCompactJson() {
        QCOMPARE(lan::framed(lan::hello("7", "dev")),
                 bytes("00000030") + R"({"device_id":"dev","type":"hello","user_id":"7"})");
        QCOMPARE(lan::framed(lan::message("c", {{"content", "Ж\n"}})),
                 bytes("0000003d") + R"({"chat_id":"c","message":{"content":"Ж\n"},"type":"message"})");
    }
};

ORVANE_TEST_MAIN(TestLanForms)
#include "tst_lan_forms.moc"

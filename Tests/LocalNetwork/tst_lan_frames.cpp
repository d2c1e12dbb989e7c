// SPDX-License-Identifier: MIT
#include "LocalNetwork/FrameReader.h"
#include "LocalNetwork/LanFrames.h"
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

class TestLanFrames : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void framesAreCutWhereverReadsEnd_data();
    void framesAreCutWhereverReadsEnd();
    void everySplitGivesTheSameFrames();
    void memoryFollowsWhatArrives();
    void aLargeFrameIsGivenBack();
    void bodiesSayHelloOrMessageOrNothing_data();
    void bodiesSayHelloOrMessageOrNothing();
    void whatIsSentIsAFrameOfCompactJson();
};

void TestLanFrames::framesAreCutWhereverReadsEnd_data() {
    QTest::addColumn<QByteArrayList>("reads");
    QTest::addColumn<QList<QByteArrayList>>("bodies");
    using Bodies = QList<QByteArrayList>;
    QTest::newRow("two in one read") << QByteArrayList{bytes("0000000161 000000026263")}
                                     << Bodies{{"a", "bc"}};
    QTest::newRow("one over three reads")
        << QByteArrayList{bytes("000000"), bytes("036162"), bytes("63")} << Bodies{{}, {}, {"abc"}};
    QTest::newRow("three bytes are no length") << QByteArrayList{bytes("000000")} << Bodies{{}};
    QTest::newRow("empty bodies") << QByteArrayList{bytes("00000000 00000000 0000000161")}
                                  << Bodies{{"", "", "a"}};
    QTest::newRow("a length with its high bit set")
        << QByteArrayList{bytes("ffffffff61"), bytes("0000000162")} << Bodies{{}, {}};
    QTest::newRow("a frame and the head of the next")
        << QByteArrayList{bytes("0000000161 0000"), bytes("000162 00")} << Bodies{{"a"}, {"b"}};
    QTest::newRow("an empty read") << QByteArrayList{"", bytes("0000000161"), ""} << Bodies{{}, {"a"}, {}};
}

void TestLanFrames::framesAreCutWhereverReadsEnd() {
    QFETCH(QByteArrayList, reads);
    QFETCH(QList<QByteArrayList>, bodies);
    FrameReader reader;
    QList<QByteArrayList> got;
    for (const QByteArray &read : reads)
        got.append(fed(reader, read));
    QCOMPARE(got, bodies);
}

void TestLanFrames::everySplitGivesTheSameFrames() {
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

void TestLanFrames::memoryFollowsWhatArrives() {
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

void TestLanFrames::aLargeFrameIsGivenBack() {
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

void TestLanFrames::bodiesSayHelloOrMessageOrNothing_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("said");
    const auto row = [](const char *name, const QByteArray &body, const char *said = "") {
        QTest::newRow(name) << body << QString::fromUtf8(said);
    };
    row("hello", R"({"type":"hello","user_id":"10","device_id":"dev_1"})", "hello 10");
    row("hello of a stranger version", R"( {"v":2,"user_id":"","type":"hello"} )", "hello ");
    row("hello with a number", R"({"type":"hello","user_id":10})");
    row("hello without an id", R"({"type":"hello","chat_id":"c","message":{}})");
    row("message", R"({"type":"message","chat_id":"c","message":{"id":"m"}})", R"(c {"id":"m"})");
    row("message of nothing", R"({"type":"message","chat_id":"","message":{}})", " {}");
    row("message without a chat", R"({"type":"message","message":{}})");
    row("chat as a number", R"({"type":"message","chat_id":1,"message":{}})");
    row("message as a text", R"({"type":"message","chat_id":"c","message":"{}"})");
    row("another type", R"({"type":"bye","user_id":"1","chat_id":"c","message":{}})");
    row("type as a number", R"({"type":1,"user_id":"1"})");
    row("a list", R"([{"type":"hello","user_id":"1"}])");
    row("no bytes", "");
    row("two objects", R"({"type":"hello","user_id":"1"}{})");
    row("no UTF-8", "{\"type\":\"hello\",\"user_id\":\"\xff\xc0\"}");
    row("a NUL", QByteArray("{\"type\":\"hello\",\"user_id\":\"1\"}\0", 32));
    row("deep", QByteArray(R"({"type":"message","chat_id":"c","message":)") + QByteArray(100'000, '['));
    row("deep and whole", R"({"type":"message","chat_id":"c","message":{"a":)" + QByteArray(100'000, '[') +
                              QByteArray(100'000, ']') + "}}");
}

void TestLanFrames::bodiesSayHelloOrMessageOrNothing() {
    QFETCH(QByteArray, body);
    QFETCH(QString, said);
    const lan::Frame frame = lan::parseFrame(body);
    QString got;
    if (const auto *hello = std::get_if<lan::Hello>(&frame))
        got = "hello " + hello->userId;
    else if (const auto *message = std::get_if<lan::Message>(&frame))
        got = message->chatId + " " + QJsonDocument(message->message).toJson(QJsonDocument::Compact);
    QCOMPARE(got, said);
}

void TestLanFrames::whatIsSentIsAFrameOfCompactJson() {
    QCOMPARE(lan::framed(lan::hello("7", "dev")),
             bytes("00000030") + R"({"device_id":"dev","type":"hello","user_id":"7"})");
    QCOMPARE(lan::framed(lan::message("c", {{"content", "Ж\n"}})),
             bytes("0000003d") + R"({"chat_id":"c","message":{"content":"Ж\n"},"type":"message"})");
}

ORVANE_TEST_MAIN(TestLanFrames)
#include "tst_lan_frames.moc"

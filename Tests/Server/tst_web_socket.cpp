// SPDX-License-Identifier: MIT
#include "Server/MessengerWebSocket.h"
#include "Support/InRow.h"
#include "Support/RecordingSocketServer.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/TestMain.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>
#include <QTimer>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

using namespace orvane;
using namespace std::chrono_literals;

namespace {

// Of these timers only those that a test is about may fire while it runs.
constexpr MessengerWebSocket::Timing slow{1h, 1h};
constexpr MessengerWebSocket::Timing reconnecting{1h, 50ms};
constexpr MessengerWebSocket::Timing pinging{40ms, 1h};

const QString auth = uR"({"token":"t0k","type":"auth"})"_s;
const QString ping = uR"({"type":"ping"})"_s;
const QString token = u"t0k"_s;

QJsonObject typed(const char *type) {
    return {{u"type"_s, QLatin1StringView(type)}};
}

QString frame(const char *type) {
    return uR"({"type":"%1"})"_s.arg(QLatin1StringView(type));
}

/// Two connections, the first replaced by the second, and the second in use.
void connectTwice(RecordingSocketServer &server, MessengerWebSocket &socket) {
    socket.connect(token);
    QTRY_VERIFY(!server.frames(0).isEmpty());
    socket.connect(token);
    QTRY_VERIFY(!server.frames(1).isEmpty());
    server.sendText(1, frame("new"));
    QTRY_VERIFY(socket.isConnected.value());
}

/// The pings serve as a clock.
void awaitPings(const RecordingSocketServer &server, qsizetype connection, qsizetype count) {
    const qsizetype before = server.frames(connection).count(ping);
    QTRY_VERIFY(server.frames(connection).count(ping) >= before + count);
}

/// Collects the types of the events, in order.
class Subscriber : public QObject {
public:
    explicit Subscriber(MessengerWebSocket &socket) {
        connect(&socket, &MessengerWebSocket::events, this, [this](const WSEvent &event) {
            types.append(event.type);
            last = event;
        });
    }

    QStringList types;
    WSEvent last;
};

constexpr qsizetype frameLimit = 200'000;

/// A WebSocket server that accepts whoever comes, says these bytes, and neither listens nor closes.
struct RawSocketServer {
    /// `again` follows for ever.
    explicit RawSocketServer(const QByteArray &bytes, const QByteArray &again = {}) {
        server.listen(QHostAddress::LocalHost);
        QObject::connect(&server, &QTcpServer::newConnection, [=, this] {
            QTcpSocket *socket = server.nextPendingConnection();
            ++connections;
            QObject::connect(socket, &QTcpSocket::disconnected, [this] { ++ended; });
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [=] {
                const QByteArray request = socket->readAll();
                const qsizetype key = request.indexOf("Sec-WebSocket-Key: ");
                if (key < 0)
                    return;
                const QByteArray salted = request.mid(key + 19, 24) + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
                socket->write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                              "Connection: Upgrade\r\nSec-WebSocket-Accept: " +
                              QCryptographicHash::hash(salted, QCryptographicHash::Sha1).toBase64() +
                              "\r\n\r\n");
                socket->write(bytes);
            });
            QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [=] {
                if (socket->bytesToWrite() == 0)
                    socket->write(again);
            });
        });
    }

    QString url() const { return u"ws://127.0.0.1:%1/ws"_s.arg(server.serverPort()); }

    int connections = 0;
    int ended = 0;
    QTcpServer server;
};

/// The head of a frame: its first byte, then its length.
QByteArray frameHead(char first, quint64 size) {
    QByteArray head(1, first);
    if (size < 126)
        return head.append(char(size));
    head.append('\x7f').append(8, '\0');
    qToBigEndian(size, head.data() + 2);
    return head;
}

/// A connection that has shown its token.
struct Live {
    explicit Live(MessengerWebSocket::Timing timing = slow)
        : socket(server.url(), timing)
        , subscriber(socket) {
        socket.connect(token);
        QTRY_VERIFY(!server.frames(0).isEmpty());
    }

    RecordingSocketServer server;
    MessengerWebSocket socket;
    Subscriber subscriber;
};

} // namespace

class TestWebSocket : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments);

private Q_SLOTS:
    void authComesFirstAndNothingOfBefore();
    void goodFramesReachEverySubscriber();
    void badFramesReachNobodyButCount();
    void aBurstLeavesOthersTheirTurnAndLosesNothing();
    void largeFramesPassBothWays();
    void framesHaveALimit();
    void aServerWithoutEndCostsLittleMemory();
    void pingsGoOutAtTheirIntervalFromOneTimer();
    void replacedConnectionReportsOnceMore();
    void lostConnectionIsReplacedWithTheLatestToken();
    void refusedConnectionsAreTriedAgain();
    void frameStopsThePendingReconnect();
    void secondFailureRestartsTheDelay();
    void brokenUrlDoesNothing();
    void endsCleanlyInEveryState();
};

void TestWebSocket::authComesFirstAndNothingOfBefore() {
    RecordingSocketServer server;
    MessengerWebSocket socket(server.url(), slow);
    socket.send(typed("lost"));
    socket.connect(u"a\"b\\c\nЖ"_s);
    socket.send(typed("one"));
    socket.send(typed("two"));
    QTRY_COMPARE(server.frames(0).size(), 3);
    QCOMPARE(server.resource(0), u"/ws"_s);
    QVERIFY(!socket.isConnected.value());
    socket.send(typed("three"));
    QTRY_COMPARE(server.frames(0), (QStringList{uR"({"token":"a\"b\\c\nЖ","type":"auth"})"_s, frame("one"),
                                                frame("two"), frame("three")}));
    server.sendText(0, frame("x"));
    QTRY_VERIFY(socket.isConnected.value());
    server.cut(0);
    QTRY_VERIFY(!socket.isConnected.value());
    socket.send(typed("lost as well"));
    socket.connect(token);
    QTRY_COMPARE(server.frames(1), QStringList{auth});
}

void TestWebSocket::goodFramesReachEverySubscriber() {
    const std::pair<const char *, const char *> rows[] = {
        {R"({"type":"typing","is_typing":true,"chat_id":"3"})", "typing"},
        {R"( {"type" : ""} )", ""},
        {R"({"type":"Pong"})", "Pong"},
        {R"({"type":"новое","n":9223372036854775807})", "новое"},
        {R"({"type":"a","type":"b"})", "b"},
    };
    Live live;
    auto &[server, socket, first] = live;
    for (const auto &[text, type] : rows) {
        const InRow row(text);
        const Subscriber second(socket);
        server.sendText(0, QString::fromUtf8(text));
        QTRY_COMPARE(second.types, QStringList{QString::fromUtf8(type)});
        QCOMPARE(first.types.last(), second.types.first());
        QCOMPARE(second.last.data, QJsonDocument::fromJson(text).object());
    }
    QCOMPARE(first.types.size(), std::ssize(rows));
}

void TestWebSocket::badFramesReachNobodyButCount() {
    const QByteArray binary("\0\xff", 2);
    const QByteArray tooDeep = R"({"type":)" + QByteArray(100'000, '[');
    for (const QByteArray &bytes :
         QByteArrayList{"[1,2]", R"({"kind":"x"})", "no json", "", "{", R"({"type":7})", R"({"type":null})",
                        R"({"type":["x"]})", R"({"type":"pong"})", R"({"type":"pong","chat_id":"3"})",
                        "\"type\"", "null", R"([{"type":"x"}])", R"({"data":{"type":"x"}})", tooDeep, binary,
                        R"({"type":"binary"})"}) {
        const InRow row(bytes.left(40));
        Live live;
        auto &[server, socket, subscriber] = live;
        QVERIFY(!socket.isConnected.value());
        if (bytes == binary || bytes.contains("binary"))
            server.sendBinary(0, bytes);
        else
            server.sendText(0, QString::fromUtf8(bytes));
        QTRY_VERIFY(socket.isConnected.value());
        server.sendText(0, frame("after"));
        QTRY_COMPARE(subscriber.types, QStringList{u"after"_s});
    }
}

void TestWebSocket::aBurstLeavesOthersTheirTurnAndLosesNothing() {
    Live live;
    auto &[server, socket, subscriber] = live;
    connect(&socket, &MessengerWebSocket::events, &subscriber, [] {
        QElapsedTimer work;
        work.start();
        while (!work.hasExpired(1)) {
        }
    });
    QTimer others;
    int turns = 0;
    connect(&others, &QTimer::timeout, &subscriber, [&] { turns += !subscriber.types.isEmpty(); });
    others.start(1ms);
    QStringList expected;
    for (int number = 0; number < 100; ++number) {
        expected.append(QString::number(number));
        server.sendText(0, uR"({"type":"%1"})"_s.arg(number));
        server.sendBinary(0, "x");
    }
    // More than is read at once while there is a burst, and the end of the connection right behind it.
    expected.append(u"large"_s);
    server.sendText(0, uR"({"type":"large","text":"%1"})"_s.arg(QString(1'000'000, u'x')));
    server.close(0);
    QTRY_VERIFY(!subscriber.types.isEmpty());
    QVERIFY(subscriber.types.size() < expected.size() && socket.isConnected.value());
    QTRY_VERIFY(!socket.isConnected.value());
    QCOMPARE(subscriber.types, expected);
    QVERIFY2(turns >= 5, qPrintable(QString::number(turns)));
}

void TestWebSocket::largeFramesPassBothWays() {
    Live live;
    auto &[server, socket, subscriber] = live;
    const QString large(1'000'000, QChar(u'Ж'));
    QJsonObject map = typed("large");
    map.insert(u"text"_s, large);
    socket.send(map);
    QTRY_COMPARE(server.frames(0).size(), 2);
    server.sendText(0, server.frames(0).last());
    QTRY_COMPARE(subscriber.types.size(), 1);
    QCOMPARE(subscriber.last.data, map);
}

void TestWebSocket::framesHaveALimit() {
    constexpr char text = '\x81';
    const QByteArray event = R"({"type":"x"})";
    const QByteArray padded = event + QByteArray(frameLimit - event.size(), ' ');
    const struct {
        const char *name;
        QByteArray bytes;
        bool passes;
    } rows[] = {
        {"as large as may be", frameHead(text, frameLimit) + padded, true},
        {"in parts, as large as may be",
         frameHead('\x01', frameLimit / 2) + padded.first(frameLimit / 2) +
             frameHead('\x80', frameLimit / 2) + padded.sliced(frameLimit / 2),
         true},
        // None of these comes to its end.
        {"announced", frameHead(text, frameLimit + 1), false},
        {"announced beyond all bounds", frameHead(text, std::numeric_limits<qint64>::max()), false},
        {"announced, binary", frameHead('\x82', frameLimit + 1), false},
        {"in parts", frameHead('\x01', frameLimit) + padded + frameHead('\0', 1) + ' ', false},
    };
    for (const auto &[name, bytes, passes] : rows) {
        const InRow row(name);
        RawSocketServer server(bytes);
        MessengerWebSocket socket(server.url(), reconnecting, frameLimit);
        const Subscriber subscriber(socket);
        socket.connect(token);
        if (passes) {
            QTRY_COMPARE(subscriber.types, QStringList{"x"});
        } else {
            // Without a limit the library takes 5 s to notice that no more comes.
            QTRY_VERIFY_WITH_TIMEOUT(server.connections >= 2 && server.ended >= 1, 3000);
            QVERIFY(!socket.isConnected.value());
        }
    }
}

void TestWebSocket::aServerWithoutEndCostsLittleMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs all addresses there are");
#endif
    for (const char *what : {"frame", "parts"}) {
        const ChildResult result = runChild({what});
        QVERIFY2(!result.crashed && result.exitCode == 0, what + result.errors.toUtf8());
    }
}

void TestWebSocket::pingsGoOutAtTheirIntervalFromOneTimer() {
    RecordingSocketServer server;
    MessengerWebSocket socket(server.url(), pinging);
    for (qsizetype connection = 0; connection < 4; ++connection) {
        socket.connect(u"t%1"_s.arg(connection));
        QTRY_VERIFY(!server.frames(connection).isEmpty());
    }
    QCOMPARE(server.frames(3).first(), uR"({"token":"t3","type":"auth"})"_s);
    const qsizetype oldFrames = server.frames(0).size();
    QElapsedTimer elapsed;
    elapsed.start();
    awaitPings(server, 3, 8);
    // Four timers would take a quarter of the time.
    QVERIFY2(elapsed.elapsed() >= 200, qPrintable(QString::number(elapsed.elapsed())));
    QCOMPARE(server.frames(0).size(), oldFrames);
}

void TestWebSocket::replacedConnectionReportsOnceMore() {
    for (const bool byAnEvent : {true, false}) {
        const InRow row(byAnEvent ? "an event" : "its end");
        RecordingSocketServer server;
        MessengerWebSocket socket(server.url(), slow);
        const Subscriber subscriber(socket);
        connectTwice(server, socket);
        if (byAnEvent) {
            server.sendText(0, frame("old"));
            QTRY_COMPARE(subscriber.types.size(), 2);
            server.sendText(0, frame("too old"));
        } else {
            server.cut(0);
            QTRY_VERIFY(!socket.isConnected.value());
        }
        server.sendText(1, frame("newer"));
        QTRY_COMPARE(subscriber.types.last(), u"newer"_s);
        QVERIFY(socket.isConnected.value());
        QVERIFY(!subscriber.types.contains(u"too old"_s));
        socket.send(typed("out"));
        QTRY_COMPARE(server.frames(1), (QStringList{auth, frame("out")}));
    }
}

void TestWebSocket::lostConnectionIsReplacedWithTheLatestToken() {
    RecordingSocketServer server;
    MessengerWebSocket socket(server.url(), reconnecting);
    socket.connect(u"first"_s);
    QTRY_COMPARE(server.frames(0).size(), 1);
    socket.connect(token);
    QTRY_COMPARE(server.frames(1).size(), 1);
    QElapsedTimer elapsed;
    for (qsizetype connection = 1; connection < 4; ++connection) {
        server.sendText(connection, frame("x"));
        QTRY_VERIFY(socket.isConnected.value());
        elapsed.start();
        const bool politely = connection % 2 == 0;
        politely ? server.close(connection) : server.cut(connection);
        QTRY_VERIFY(!socket.isConnected.value());
        QTRY_COMPARE(server.frames(connection + 1), QStringList{auth});
        QVERIFY2(elapsed.elapsed() >= 45, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(!socket.isConnected.value());
    }
    QCOMPARE(server.connections(), 5);
}

void TestWebSocket::refusedConnectionsAreTriedAgain() {
    RecordingSocketServer closed;
    closed.stopListening();
    MessengerWebSocket early(closed.url(), {1h, 20ms});
    early.connect(token);
    early.send(typed("not kept for the next connection"));
    QTimer::singleShot(60ms, &closed, &RecordingSocketServer::listenAgain);
    QTRY_COMPARE(closed.frames(0), QStringList{auth});

    const std::pair<const char *, ScriptedAnswer> rows[] = {
        {"a page", ScriptedAnswer::of(200, "<html></html>")},
        {"401", ScriptedAnswer::of(401)},
        {"a wrong key", ScriptedAnswer::raw("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                                            "Connection: Upgrade\r\nSec-WebSocket-Accept: AAAA\r\n\r\n")},
        {"closed", ScriptedAnswer::closed()},
        {"silence", ScriptedAnswer::silence()},
    };
    for (const auto &[name, answer] : rows) {
        const InRow row(name);
        ScriptedHttpServer server;
        for (int times = 0; times < 10; ++times)
            server.answerNext(answer);
        MessengerWebSocket socket(u"ws://127.0.0.1:%1/ws"_s.arg(server.port()), {1h, 20ms, 60ms});
        socket.connect(token);
        socket.send(typed("x"));
        QTRY_VERIFY(server.requests().size() >= 3);
        QVERIFY(!socket.isConnected.value());
        for (const RecordedRequest &request : server.requests()) {
            QCOMPARE(request.target, "/ws");
            QVERIFY(!request.headers.contains("authorization"));
        }
    }
}

void TestWebSocket::frameStopsThePendingReconnect() {
    RecordingSocketServer server;
    MessengerWebSocket socket(server.url(), {40ms, 500ms});
    connectTwice(server, socket);
    // The end of the old connection starts the delay, a frame of the new one stops it.
    server.cut(0);
    QTRY_VERIFY(!socket.isConnected.value());
    server.sendText(1, frame("x"));
    QTRY_VERIFY(socket.isConnected.value());
    awaitPings(server, 1, 16);
    QCOMPARE(server.connections(), 2);
}

void TestWebSocket::secondFailureRestartsTheDelay() {
    RecordingSocketServer server;
    MessengerWebSocket socket(server.url(), {40ms, 1s});
    connectTwice(server, socket);
    server.cut(0);
    QTRY_VERIFY(!socket.isConnected.value());
    awaitPings(server, 1, 4);
    QElapsedTimer sinceSecond;
    sinceSecond.start();
    server.cut(1);
    QTRY_COMPARE(server.connections(), 3);
    QVERIFY2(sinceSecond.elapsed() >= 950, qPrintable(QString::number(sinceSecond.elapsed())));
}

void TestWebSocket::brokenUrlDoesNothing() {
    for (const char *url : {"", "ws://[::", "ws://127.0.0.1:99999/ws", "ws://127.0.0.1/a b"}) {
        const InRow row(url);
        MessengerWebSocket socket(QLatin1StringView(url), reconnecting);
        socket.connect(token);
        socket.send(typed("x"));
        QVERIFY(!socket.isConnected.value());
        QVERIFY(socket.children().isEmpty());
    }
}

void TestWebSocket::endsCleanlyInEveryState() {
    enum State { idle, refused, connecting, waiting, connected, failed, replaced };
    for (const State state : {idle, refused, connecting, waiting, connected, failed, replaced}) {
        const InRow row(QByteArray::number(state));
        RecordingSocketServer server;
        auto socket = std::make_unique<MessengerWebSocket>(server.url(), slow);
        if (state == refused)
            server.stopListening();
        if (state != idle)
            socket->connect(token);
        if (state >= waiting)
            QTRY_COMPARE(server.frames(0).size(), 1);
        if (state >= connected) {
            server.sendText(0, frame("x"));
            QTRY_VERIFY(socket->isConnected.value());
        }
        if (state == failed) {
            server.cut(0);
            QTRY_VERIFY(!socket->isConnected.value());
        }
        if (state == replaced) {
            socket->connect(token);
            QTRY_COMPARE(server.frames(1).size(), 1);
        }
        socket.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // The next one is not disturbed by what the last one left behind.
        RecordingSocketServer next;
        MessengerWebSocket other(next.url(), slow);
        other.connect(token);
        QTRY_COMPARE(next.frames(0), QStringList{auth});
    }
}

/// Connects to a server that goes on for ever, until that one has been given up.
int TestWebSocket::child(const QStringList &arguments) {
    const QString what = arguments.first();
    const QByteArray noise(1'000'000, 'x');
    const QByteArray part = frameHead('\0', quint64(noise.size())) + noise;
    RawSocketServer server(what == "frame" ? frameHead('\x81', 1'500'000'000) : frameHead('\x01', 1) + ' ',
                           what == "frame" ? noise : part);
    MessengerWebSocket socket(server.url(), {1h, 20ms});
    const rlimit limit{1'000'000'000, 1'000'000'000};
    setrlimit(RLIMIT_AS, &limit);
    socket.connect(token);
    return QTest::qWaitFor([&] { return server.ended > 0 && server.connections > 1; }, 20'000) ? 0 : 1;
}

ORVANE_TEST_MAIN(TestWebSocket)

#include "tst_web_socket.moc"

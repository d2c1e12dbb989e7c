// SPDX-License-Identifier: MIT
#include "LanPeers.h"
#include "Support/InRow.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <QEventLoop>

#include <memory>
#include <vector>

#include <sys/resource.h>
#include <sys/socket.h>

using namespace orvane;

namespace {

constexpr int manyPeers = 1000;

/// A channel that listens on a free port and keeps what it hears.
struct Listening {
    Listening() { channel.start(); }

    SignedInSession signedIn;
    MessengerP2PDataChannel channel{signedIn.session, 0, 0};
    Heard heard{channel};
};

/// A channel that dials whoever listens on this port.
struct Dialling {
    explicit Dialling(quint16 port)
        : channel(signedIn.session, 0, port) {}

    bool link(const QString &id) {
        channel.connect(id, "127.0.0.1");
        return QTest::qWaitFor([&] { return channel.connectedPeerIds().contains(id); });
    }

    SignedInSession signedIn;
    MessengerP2PDataChannel channel;
};

/// Everything that was written before has been read when this message has come.
void settle(RawPeer &peer, const Heard &heard) {
    static int count = 0;
    const QByteArray chat = "settled" + QByteArray::number(++count);
    peer.say(messageWire(chat));
    QTRY_VERIFY(!heard.isEmpty() && heard.last().endsWith('|' + chat));
}

QByteArray readFrame(QTcpSocket &socket) {
    const auto whole = [&] {
        const QByteArray head = socket.peek(4);
        return head.size() == 4 && socket.bytesAvailable() >= 4 + head.toHex().toLongLong(nullptr, 16);
    };
    if (!QTest::qWaitFor(whole))
        return "no frame came";
    return socket.read(socket.read(4).toHex().toLongLong(nullptr, 16));
}

} // namespace

class TestP2PDataChannel : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments) {
        const OwnFolders folders;
        SignedInSession signedIn;
        if (arguments.first() == "taken") {
            QTcpServer other;
            other.listen(QHostAddress::Any);
            MessengerP2PDataChannel channel(signedIn.session, other.serverPort());
            channel.start();
            other.close();
            channel.start();
            return channel.listenedPort() == 0;
        }
        MessengerP2PDataChannel channel(signedIn.session, 0, 0);
        const Heard heard(channel);
        channel.start();
        RawPeer greedy(channel.listenedPort());
        RawPeer other(channel.listenedPort(), "5");
        const rlimit limit{512 * 1024 * 1024, 512 * 1024 * 1024};
        setrlimit(RLIMIT_AS, &limit);
        QEventLoop untilItEnds;
        QObject::connect(&greedy.socket, &QTcpSocket::disconnected, &untilItEnds, &QEventLoop::quit);
        greedy.say(QByteArray(4, '\xff'));
        const QByteArray part(1024 * 1024, 'x');
        QObject::connect(&greedy.socket, &QTcpSocket::bytesWritten, [&] {
            if (greedy.socket.bytesToWrite() < part.size())
                greedy.socket.write(part);
        });
        greedy.say(part);
        untilItEnds.exec();
        other.say(messageWire("c"));
        return QTest::qWaitFor([&] { return heard.contains("5|c"); }) ? 0 : 1;
    }

private Q_SLOTS:
    void whatAnAcceptedConnectionSays() {
        const auto check = [](const char *name, const QByteArray &bytes, const QStringList &heard,
                              const QString &peerName = "") {
            IN_ROW(name);
            Listening home;
            RawPeer peer(home.channel.listenedPort());
            peer.say(bytes);
            settle(peer, home.heard);
            QVERIFY(home.heard.takeLast().startsWith(peerName + '|'));
            QCOMPARE(QStringList(home.heard), heard);
            QCOMPARE(home.channel.connectedPeerIds(),
                     peerName.isEmpty() ? QSet<QString>() : QSet<QString>{peerName});
            // Nothing is answered.
            QCOMPARE(peer.socket.bytesAvailable(), 0);
        };
        const QByteArray message = messageWire("c");
        check("message before hello", message, {"|c"});
        check("hello and message at once", helloWire("5") + message, {"5|c"}, "5");
        check("message, then hello", message + helloWire("5"), {"|c"}, "5");
        check("two messages in order", message + messageWire("d"), QStringList{"|c", "|d"});
        check("hello with a number", wire(R"({"type":"hello","user_id":5})"), {});
        check("nothing that is said", wire("") + wire("[]") + wire("{") + wire(R"({"type":"x"})"), {});
        check("deep, then sound", wire(QByteArray(60'000, '[')) + message, {"|c"});
        check("a name of 60,000 letters", helloWire(QByteArray(60'000, 'n')), {}, QString(60'000, 'n'));
    }

    void theNameOfAnEarlierReadStaysOnMessages() {
        Listening home;
        RawPeer peer(home.channel.listenedPort(), "5");
        settle(peer, home.heard);
        peer.say(helloWire("6") + messageWire("c"));
        QTRY_COMPARE(home.heard.last(), "5|c");
        QCOMPARE(home.channel.connectedPeerIds(), (QSet<QString>{"5", "6"}));
    }

    void theDiallerSaysHelloAndThenMessages() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        Dialling own(server.serverPort());
        own.signedIn.session.adoptDeviceId("dev_1");
        QVERIFY(own.link("9"));
        QVERIFY(own.channel.send("9", "c", {{"content", "Ж"}}));
        own.signedIn.session.currentUserId = std::nullopt;
        QVERIFY(own.link("8"));
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *first = server.nextPendingConnection();
        QCOMPARE(readFrame(*first), R"({"device_id":"dev_1","type":"hello","user_id":"7"})");
        QCOMPARE(readFrame(*first), R"({"chat_id":"c","message":{"content":"Ж"},"type":"message"})");
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *second = server.nextPendingConnection();
        QCOMPARE(readFrame(*second), R"({"device_id":"dev_1","type":"hello","user_id":"0"})");
    }

    void sendNeedsALinkThatIsUp() {
        Listening there;
        Dialling own(there.channel.listenedPort());
        QVERIFY(!own.channel.send("9", "c", {}));
        own.channel.connect("9", "127.0.0.1");
        QVERIFY(!own.channel.send("9", "c", {}));
        QVERIFY(own.link("9"));
        QVERIFY(own.channel.send("9", "c", {}));
        QTRY_COMPARE(QStringList(there.heard), QStringList{"7|c"});
        QVERIFY(there.channel.send("7", "back", {}));
        Heard back(own.channel);
        QTRY_COMPARE(QStringList(back), QStringList{"9|back"});
    }

    void oneConnectionForOnePeer() {
        Listening there;
        int links = 0;
        QObject::connect(&there.channel, &MessengerP2PDataChannel::connectedPeerIdsChanged, [&] { ++links; });
        Dialling own(there.channel.listenedPort());
        own.channel.connect("9", "127.0.0.1");
        QVERIFY(own.link("9"));
        own.channel.connect("9", "127.0.0.1");
        QVERIFY(own.channel.send("9", "c", {}));
        QTRY_COMPARE(there.heard.size(), 1);
        QCOMPARE(links, 1);
    }

    void aFailedDialCanBeTriedAgain() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const quint16 free = server.serverPort();
        server.close();
        Dialling own(free);
        own.channel.connect("9", "127.0.0.1");
        own.channel.connect("8", "not a host");
        QVERIFY(server.listen(QHostAddress::LocalHost, free) || !server.isListening());
        QTRY_VERIFY(own.link("9"));
        QVERIFY(!own.channel.send("8", "c", {}));
    }

    void whoeverDialledKnowsTheNameOfTheOther() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        Dialling own(server.serverPort());
        Heard heard(own.channel);
        QVERIFY(own.link("9"));
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *other = server.nextPendingConnection();
        // Its own hello gives it a second name, but not to its messages.
        other->write(helloWire("66") + messageWire("c"));
        QTRY_COMPARE(QStringList(heard), QStringList{"9|c"});
        QCOMPARE(own.channel.connectedPeerIds(), (QSet<QString>{"9", "66"}));
    }

    void aLostLinkIsForgotten() {
        const auto check = [](const char *name, bool reset, bool dialled) {
            IN_ROW(name);
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            SignedInSession signedIn;
            MessengerP2PDataChannel channel(signedIn.session, 0, server.serverPort());
            channel.start();
            const Heard heard(channel);
            std::unique_ptr<RawPeer> peer;
            QTcpSocket *other = nullptr;
            if (dialled) {
                channel.connect("5", "127.0.0.1");
                QTRY_VERIFY(server.hasPendingConnections());
                other = server.nextPendingConnection();
            } else {
                peer = std::make_unique<RawPeer>(channel.listenedPort(), "5");
                other = &peer->socket;
            }
            QTRY_VERIFY(channel.connectedPeerIds().contains("5"));
            if (reset) {
                const linger atOnce{1, 0};
                setsockopt(int(other->socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
                other->abort();
            } else {
                // Half a frame goes with it.
                other->write(messageWire("c").chopped(1));
                other->disconnectFromHost();
            }
            QTRY_VERIFY(channel.connectedPeerIds().isEmpty());
            QVERIFY(!channel.send("5", "c", {}));
            QVERIFY(heard.isEmpty());
            // There is room for the same name.
            RawPeer again(channel.listenedPort(), "5");
            QTRY_VERIFY(channel.send("5", "c", {}));
        };
        check("closed, accepted", false, false);
        check("closed, dialled", false, true);
        check("reset, accepted", true, false);
        check("reset, dialled", true, true);
    }

    void aNewerHelloReplacesAndAnOlderEndRemovesByName() {
        Listening home;
        RawPeer older(home.channel.listenedPort(), "5");
        settle(older, home.heard);
        RawPeer newer(home.channel.listenedPort(), "5");
        settle(newer, home.heard);
        QVERIFY(home.channel.send("5", "c", {}));
        QVERIFY(readFrame(newer.socket).contains(R"("chat_id":"c")"));
        QCOMPARE(older.socket.bytesAvailable(), 0);
        settle(older, home.heard);
        older.socket.disconnectFromHost();
        QTRY_VERIFY(!home.channel.send("5", "c", {}));
        settle(newer, home.heard);
        QVERIFY(home.heard.last().startsWith("5|"));
    }

    void aConnectionWithTwoNamesLeavesTheFirst() {
        Listening home;
        {
            RawPeer peer(home.channel.listenedPort());
            peer.say(helloWire("5") + helloWire("6"));
            settle(peer, home.heard);
        }
        QTRY_COMPARE(home.channel.connectedPeerIds(), QSet<QString>{"5"});
        // Its bytes are lost without a word.
        QVERIFY(home.channel.send("5", "c", {}));
        home.channel.stop();
        QVERIFY(!home.channel.send("5", "c", {}));
    }

    void stopEndsLinksAndLeavesTheAnonymous() {
        Listening home;
        RawPeer named(home.channel.listenedPort(), "5");
        settle(named, home.heard);
        RawPeer anonymous(home.channel.listenedPort());
        settle(anonymous, home.heard);
        const quint16 port = home.channel.listenedPort();
        home.channel.stop();
        QVERIFY(home.channel.connectedPeerIds().isEmpty());
        QCOMPARE(home.channel.listenedPort(), 0);
        QTcpSocket late;
        late.connectToHost("127.0.0.1", port);
        QVERIFY(!late.waitForConnected());
        QTRY_VERIFY(!named.isOpen());
        settle(anonymous, home.heard);
        QVERIFY(home.heard.last().startsWith('|'));

        home.channel.start();
        RawPeer again(home.channel.listenedPort(), "5");
        settle(again, home.heard);
        QCOMPARE(home.channel.connectedPeerIds(), QSet<QString>{"5"});
    }

    void stopWhileAMessageIsHeard() {
        Listening home;
        QStringList chats;
        home.channel.onMessage = [&](const QString &, const QString &chat, const QJsonObject &) {
            chats.append(chat);
            home.channel.stop();
        };
        RawPeer peer(home.channel.listenedPort());
        peer.say(helloWire("5") + messageWire("a") + messageWire("b") + helloWire("6"));
        QTRY_VERIFY(!peer.isOpen());
        QCOMPARE(chats, QStringList{"a"});
        QVERIFY(home.channel.connectedPeerIds().isEmpty());
    }

    void startTwiceKeepsTheListener() {
        Listening home;
        const quint16 port = home.channel.listenedPort();
        home.channel.start();
        QCOMPARE(home.channel.listenedPort(), port);
        RawPeer peer(port);
        settle(peer, home.heard);
    }

    void aTakenPortIsSaidAndTriedAgain() {
        const ChildResult result = runChild({"taken"});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.output.count('\n'), 1);
        QVERIFY(result.output.startsWith("P2P listener error: "));
    }

    void aThousandSilentConnections() {
        // A place that gives its programs few descriptors.
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        if (limit.rlim_max < 3 * manyPeers)
            QSKIP("this place has no room for both ends of a thousand connections");
        Listening home;
        std::vector<std::unique_ptr<RawPeer>> silent;
        for (int i = 0; i < manyPeers; ++i) {
            silent.push_back(std::make_unique<RawPeer>(home.channel.listenedPort()));
            // Every other one holds half a length open.
            if (i % 2)
                silent.back()->say(QByteArray(2, '\0'));
            QCoreApplication::processEvents();
        }
        RawPeer peer(home.channel.listenedPort(), "5");
        settle(peer, home.heard);
        QVERIFY(home.channel.send("5", "c", {}));
        QVERIFY(readFrame(peer.socket).contains(R"("chat_id":"c")"));
        home.channel.stop();
        settle(*silent.front(), home.heard);
    }

    void aPeerThatNeverReads() {
        Listening home;
        RawPeer deaf(home.channel.listenedPort(), "5");
        deaf.socket.setReadBufferSize(1);
        settle(deaf, home.heard);
        const QJsonObject large{{"content", QString(100'000, 'x')}};
        for (int i = 0; i < 200; ++i)
            QVERIFY(home.channel.send("5", "c", large));
        RawPeer other(home.channel.listenedPort(), "6");
        settle(other, home.heard);
        QVERIFY(home.channel.send("6", "c", {}));
        QVERIFY(readFrame(other.socket).contains(R"("chat_id":"c")"));
        home.channel.stop();
        deaf.socket.setReadBufferSize(0);
        QTRY_VERIFY(!deaf.isOpen());
    }

    void aFrameThatMemoryCannotHold() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("a sanitizer needs all addresses there are");
#endif
        const ChildResult result = runChild({"memory"});
        QVERIFY2(!result.crashed && result.exitCode == 0, qPrintable(result.errors));
    }
};

ORVANE_TEST_MAIN(TestP2PDataChannel)
#include "tst_p2p_data_channel.moc"

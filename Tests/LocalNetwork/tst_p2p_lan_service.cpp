// SPDX-License-Identifier: MIT
#include "HomeServer/Client.h"
#include "LanPeers.h"
#include "LocalNetwork/P2PLanPanelView.h"
#include "Support/Await.h"
#include "Support/ClientParts.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QCoroTask>

#include <functional>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace std::chrono_literals;
using homeserver::test::Person;
using homeserver::test::Site;

namespace {

const QByteArray registerPath = "/api/messenger/p2p/register";
const QByteArray discoverPath = "/api/messenger/p2p/discover";

/// These tests have loopback alone to meet on.
bool isLoopback(const QString &host) {
    return host == "127.0.0.1";
}

/// User 7's service, on a server that follows a script unless it is told another one.
struct Lan : ClientParts {
    explicit Lan(std::chrono::milliseconds heartbeat = 1h, quint16 dialled = 1)
        : channel(session, 0, dialled) {
        signIn();
        interfaces.addresses = {{"en0", "10.0.0.5"}};
        restart(heartbeat);
    }

    /// Another service on the same settings, as after a restart of the program.
    void restart(std::chrono::milliseconds heartbeat = 1h) {
        service.reset();
        service = std::make_unique<MessengerP2PLanService>(
            MessengerP2PLanService::Parts{session, *usedApi, socket, channel, interfaces,
                                          std::make_unique<UserDefaults>(folder.filePath("defaults.ini")),
                                          heartbeat, centre, mayBeDialled});
    }

    void use(Site &site, const Person &person) {
        home = std::make_unique<MessengerAPI>(site.server().httpUrl().toString(), session);
        usedApi = home.get();
        session.token = person.token;
        session.currentUserId = person.id;
        restart();
    }

    void discovers(const QByteArray &answer) {
        http.answerFor(discoverPath, ScriptedAnswer::of(200, answer));
    }
    void enable() { QCoro::waitFor(service->enable()); }
    void refresh() { QCoro::waitFor(service->refreshPeers()); }
    std::optional<QString> stored(const char *key) const {
        return UserDefaults(folder.filePath("defaults.ini")).text(key);
    }

    FixedInterfaces interfaces;
    bool (*mayBeDialled)(const QString &) = isLoopback;
    NotificationCentre centre;
    MessengerP2PDataChannel channel;
    std::unique_ptr<MessengerAPI> home;
    MessengerAPI *usedApi = &api;
    std::unique_ptr<MessengerP2PLanService> service;
};

} // namespace

class TestP2PLanService : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void onAndOffAtHome() {
        Site site;
        Person anna(site, "anna");
        Person bert(site, "bert");
        QCOMPARE(
            bert.post("/api/messenger/p2p/register", {{"local_ip", "10.0.0.6"}, {"device_id", "b"}}).status,
            200);
        Lan lan;
        lan.use(site, anna);
        lan.enable();
        QVERIFY(lan.service->isEnabled && !lan.service->lastError.value());
        QCOMPARE(lan.service->localIP.value(), "10.0.0.5");
        QCOMPARE(lan.service->subnet.value(), "10.0.0.0/24");
        QVERIFY(lan.channel.listenedPort() != 0);
        QCOMPARE(lan.stored("ot_p2p_enabled"), "true");
        QCOMPARE(lan.stored("ot_p2p_subnet"), "10.0.0.0/24");
        QCOMPARE(lan.service->peers.value().size(), 1);
        QCOMPARE(lan.service->peers.value().first().value(u"local_ip"_s), QJsonValue("10.0.0.6"));
        const auto seenByBert = [&] {
            return bert.get("/api/messenger/p2p/discover").json.value(u"peers"_s).toArray().size();
        };
        QCOMPARE(seenByBert(), 1);

        lan.service->disable();
        QVERIFY(!lan.service->isEnabled && lan.service->peers.value().isEmpty());
        QCOMPARE(lan.channel.listenedPort(), 0);
        QCOMPARE(lan.service->localIP.value(), "10.0.0.5");
        QCOMPARE(lan.stored("ot_p2p_enabled"), std::nullopt);
        QCOMPARE(lan.stored("ot_p2p_subnet"), "10.0.0.0/24");
        QTRY_COMPARE(seenByBert(), 0);
    }

    void failuresStayOff() {
        const auto check = [](const QList<InterfaceAddress> &addresses, int status, const QString &error) {
            IN_ROW(error.toUtf8());
            Lan lan;
            lan.http.answerFor(registerPath, ScriptedAnswer::of(status));
            lan.interfaces.addresses = addresses;
            // What a restart left behind goes as well.
            lan.service->isEnabled = true;
            lan.enable();
            QVERIFY(!lan.service->isEnabled);
            QCOMPARE(lan.service->lastError.value(), error);
            QCOMPARE(lan.channel.listenedPort(), 0);
            QCOMPARE(lan.stored("ot_p2p_enabled"), std::nullopt);
            // The next attempt forgets the failure at once.
            lan.http.answerFor(registerPath, ScriptedAnswer::of(200, R"({"subnet":5})"));
            lan.interfaces.addresses = {{"en0", "10.0.0.5"}};
            lan.enable();
            QVERIFY(lan.service->isEnabled && !lan.service->lastError.value());
            QCOMPARE(lan.service->subnet.value(), QString());
        };
        check({{"lo", "127.0.0.1"}}, 200, "LAN IP не найден (нужен Wi‑Fi: 192.168.x.x / 10.x.x.x)");
        check({{"en0", "10.0.0.5"}}, 403, localizedDescription(ApiError("api", 403)));
    }

    void aRestartStartsNothing() {
        Lan lan;
        lan.http.answerFor(registerPath, ScriptedAnswer::of(200, R"({"subnet":"s"})"));
        lan.enable();
        lan.channel.stop();
        lan.http.reset();
        lan.restart(1ms);
        QVERIFY(lan.service->isEnabled);
        QCOMPARE(lan.service->subnet.value(), "s");
        lan.arrive(R"({"type":"p2p_signal","from":"9","signal_type":"offer"})");
        lan.refresh();
        QCOMPARE(lan.channel.listenedPort(), 0);
        QVERIFY(lan.service->linkedPeerIds().isEmpty());
        QCOMPARE(lan.http.requests().size(), 1);
        QCOMPARE(lan.http.lastRequest().target, discoverPath + "?subnet=s");
    }

    void theFlagAndTheSubnetOutliveWhatTheyShould() {
        Lan lan;
        lan.http.answerFor(registerPath, ScriptedAnswer::of(200, R"({"subnet":"s"})"));
        lan.enable();
        lan.service->disable();
        QTRY_COMPARE(lan.http.lastRequest().method, "DELETE");
        QCOMPARE(lan.http.lastRequest().target, registerPath);
        QCOMPARE(lan.http.lastRequest().body, "{}");
        lan.restart();
        QVERIFY(!lan.service->isEnabled);
        QCOMPARE(lan.service->subnet.value(), "s");
        const auto before = lan.http.requests().size();
        lan.refresh();
        QCOMPARE(lan.http.requests().size(), before);
    }

    void answersOfTheServer() {
        const auto check = [](const char *name, const char *answer, int peers, const QString &subnet = "s",
                              int links = 0, int status = 200) {
            IN_ROW(name);
            QTcpServer others;
            QVERIFY(others.listen(QHostAddress::LocalHost));
            Lan lan(1h, others.serverPort());
            lan.http.answerFor(registerPath, ScriptedAnswer::of(200, R"({"subnet":"s"})"));
            lan.discovers(R"({"peers":[{"user_id":"6"}]})");
            lan.enable();
            lan.http.answerFor(discoverPath, ScriptedAnswer::of(status, answer));
            lan.refresh();
            QCOMPARE(lan.service->peers.value().size(), peers);
            QCOMPARE(lan.service->subnet.value(), subnet);
            QCOMPARE(lan.service->lastError.value().has_value(), peers == 1 && links == 0);
            QVERIFY(lan.service->isEnabled);
            QTRY_COMPARE(lan.channel.connectedPeerIds().size(), links);
            QVERIFY(lan.service->linkedPeerIds().isEmpty());
            if (status == 200 && *answer == '{') {
                lan.refresh();
                QCOMPARE(lan.service->linkedPeerIds(), lan.channel.connectedPeerIds());
            }
        };
        check("two to dial, and those who dial, and oneself", R"({"peers":[
            {"user_id":"8","local_ip":"127.0.0.1"},{"user_id":"70","local_ip":"127.0.0.1"},
            {"user_id":"10","local_ip":"127.0.0.1"},{"user_id":"7","local_ip":"127.0.0.1"}]})",
              4, "s", 2);
        check("the same one twice",
              R"({"peers":[{"user_id":"8","local_ip":"127.0.0.1"},{"user_id":"8","local_ip":"127.0.0.1"}]})",
              2, "s", 1);
        check(
            "ids and addresses of other types",
            R"({"peers":[{"user_id":8,"local_ip":"127.0.0.1"},{"user_id":"9"},{"user_id":"9","local_ip":5},{}]})",
            4);
        check("another subnet", R"({"peers":[],"subnet":"t"})", 0, "t");
        check("an empty subnet", R"({"subnet":""})", 0);
        check("peers that are no dictionaries",
              R"({"peers":[{"user_id":"8","local_ip":"127.0.0.1"},5],"subnet":6})", 0);
        check("no object", "[]", 0);
        check("no JSON", "<html>", 1, "s", 0);
        check("a failure", "{}", 1, "s", 0, 500);
    }

    void theHeartbeatFollowsTheAddress() {
        Lan lan(10ms);
        lan.enable();
        lan.interfaces.addresses = {{"en1", "192.168.1.9"}};
        QTRY_COMPARE(lan.service->localIP.value(), "192.168.1.9");
        const auto told = [&](const char *address) {
            for (const RecordedRequest &request : lan.http.requests())
                if (request.target == registerPath && request.body.contains(address))
                    return true;
            return false;
        };
        QTRY_VERIFY(told("192.168.1.9"));
        // Neither no address nor a refusal is worth a word, and refreshing goes on.
        lan.interfaces.addresses.clear();
        lan.http.reset();
        lan.discovers(R"({"peers":[{"user_id":"6"}]})");
        QTRY_COMPARE(lan.service->peers.value().size(), 1);
        QCOMPARE(lan.service->localIP.value(), "192.168.1.9");
        lan.interfaces.addresses = {{"en0", "10.0.0.7"}};
        lan.http.answerFor(registerPath, ScriptedAnswer::of(500, R"({"subnet":"never read"})"));
        lan.discovers("{}");
        QTRY_VERIFY(told("10.0.0.7") && lan.service->peers.value().isEmpty());
        QVERIFY(!lan.service->lastError.value() && lan.service->isEnabled);
        QCOMPARE(lan.service->subnet.value(), QString());
    }

    void aLateAnswerAfterOffDialsNobody() {
        QTcpServer others;
        QVERIFY(others.listen(QHostAddress::LocalHost));
        Lan lan(1h, others.serverPort());
        lan.enable();
        lan.http.reset();
        lan.http.answerNext(
            ScriptedAnswer::of(200, R"({"peers":[{"user_id":"8","local_ip":"127.0.0.1"}]})").heldBack());
        QCoro::Task<void> refreshing = lan.service->refreshPeers();
        QTRY_COMPARE(lan.http.lastRequest().target, discoverPath);
        lan.service->disable();
        lan.http.release();
        QCoro::waitFor(refreshing);
        QVERIFY(lan.service->peers.value().isEmpty());
        QVERIFY(!others.waitForNewConnection(0) && lan.channel.connectedPeerIds().isEmpty());
    }

    void signalsLinkUntilTheNextRefresh() {
        const auto check = [](const char *rest, bool links, const char *type = "p2p_signal") {
            IN_ROW(rest);
            const QByteArray event = QByteArray(R"({"type":")") + type + "\"," + rest + '}';
            Lan lan;
            lan.arrive(event);
            QVERIFY(lan.service->linkedPeerIds().isEmpty());
            lan.enable();
            lan.enable();
            lan.arrive(event);
            QCOMPARE(lan.service->linkedPeerIds(), links ? QSet<QString>{"9"} : QSet<QString>());
            lan.refresh();
            QVERIFY(lan.service->linkedPeerIds().isEmpty());
            lan.service->disable();
            lan.arrive(event);
            QVERIFY(lan.service->linkedPeerIds().isEmpty());
        };
        check(R"("from":"9","signal_type":"offer")", true);
        check(R"("from":"9","signal_type":"answer")", true);
        check(R"("from":"9","signal_type":"bye")", false);
        check(R"("from":"9","signal_type":1)", false);
        check(R"("from":"9")", false);
        check(R"("signal_type":"offer")", false);
        check(R"("from":9,"signal_type":"offer")", false);
        check(R"("from":"9","signal_type":"offer")", false, "call_offer");
    }

    void messagesArePostedAndLink() {
        Lan lan;
        QList<QJsonObject> posted;
        connect(&lan.centre, &NotificationCentre::posted, this,
                [&](const QString &name, const QJsonObject &info) {
                    QCOMPARE(name, "orvaneP2PMessage");
                    QVERIFY(lan.service->linkedPeerIds().contains(info.value(u"peer_id"_s).toString()));
                    posted.append(info);
                });
        lan.enable();
        RawPeer peer(lan.channel.listenedPort(), "9");
        peer.say(messageWire("c"));
        QTRY_COMPARE(posted.size(), 1);
        QCOMPARE(posted.first(),
                 (QJsonObject{{"peer_id", "9"}, {"chat_id", "c"}, {"message", QJsonObject{{"id", "m"}}}}));
    }

    void addressesBeyondTheLocalNetworkAreNotDialled() {
        QTcpServer others;
        QVERIFY(others.listen(QHostAddress::LocalHost));
        Lan lan(1h, others.serverPort());
        lan.mayBeDialled = lan::mayBeDialled;
        lan.restart();
        lan.discovers(
            R"({"peers":[{"user_id":"8","local_ip":"127.0.0.1"},{"user_id":"9","local_ip":"localhost"}]})");
        lan.enable();
        QCOMPARE(lan.service->peers.value().size(), 2);
        const RawPeer own(others.serverPort());
        QTRY_VERIFY(others.hasPendingConnections());
        QCOMPARE(others.nextPendingConnection()->peerPort(), own.socket.localPort());
    }

    void nothingIsPostedWhileOff() {
        Lan lan;
        QStringList chats;
        connect(&lan.centre, &NotificationCentre::posted, this,
                [&](const QString &, const QJsonObject &info) {
                    chats.append(info.value(u"chat_id"_s).toString());
                });
        lan.enable();
        QStringList heard;
        lan.channel.onMessage = [&, post = lan.channel.onMessage](const QString &peer, const QString &chat,
                                                                  const QJsonObject &message) {
            heard.append(chat);
            post(peer, chat, message);
        };
        RawPeer peer(lan.channel.listenedPort());
        peer.say(messageWire("on"));
        QTRY_COMPARE(heard, QStringList{"on"});
        lan.service->disable();
        // Whoever has not said a name stays, but nothing of theirs gets through, and nothing gets to them.
        peer.say(helloWire("9") + messageWire("off"));
        QTRY_COMPARE(heard.last(), "off");
        QVERIFY(lan.service->linkedPeerIds().isEmpty() && !lan.channel.send("9", "c", {}));
        lan.enable();
        peer.say(helloWire("9") + messageWire("on again"));
        QTRY_COMPARE(heard.last(), "on again");
        QCOMPARE(chats, (QStringList{"on", "on again"}));
        QVERIFY(lan.channel.send("9", "c", {}));
    }

    void thePanelSaysWhatThereIs() {
        Lan lan;
        const auto panel = std::make_shared<P2PLanPanelView>(*lan.service);
        new QAbstractItemModelTester(&panel->peers, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     panel.get());
        const auto rows = [&] {
            QStringList said;
            for (const LanPeer &peer : panel->peers.records())
                said.append(QStringList{peer.name, peer.address, peer.status}.join('|'));
            return said;
        };
        panel->appear();
        QCOMPARE(panel->running.value(), 0);
        lan.discovers(R"({"peers":[{"user_id":"6","local_ip":"10.0.0.6","display_name":"Ben","online":true},
                                  {"user_id":6,"online":"yes"},{"user_id":"5","display_name":"Eva","local_ip":"10.0.0.9"}]})");
        panel->setEnabled(true);
        QCOMPARE(panel->running.value(), 1);
        QTRY_COMPARE(panel->running.value(), 0);
        QVERIFY(lan.service->isEnabled);
        QCOMPARE(rows(),
                 (QStringList{"Ben|10.0.0.6|🟢 online", "Peer||⚪ offline", "Eva|10.0.0.9|⚪ offline"}));
        RawPeer peer(lan.channel.listenedPort(), "5");
        QTRY_COMPARE(panel->linkCount.value(), 1);
        QCOMPARE(rows().last(), "Eva|10.0.0.9|⚪ offline");
        peer.say(messageWire("c"));
        QTRY_COMPARE(rows().last(), "Eva|10.0.0.9|🔗 связан");
        // It wins over online, and the refresh of an opened sheet keeps it.
        lan.discovers(R"({"peers":[{"user_id":"5","display_name":"Eva","online":true}]})");
        panel->appear();
        QTRY_COMPARE(rows(), QStringList{"Eva||🔗 связан"});
        panel->setEnabled(false);
        QVERIFY(rows().isEmpty() && panel->linkCount == 0);
    }
};

ORVANE_TEST_MAIN(TestP2PLanService)
#include "tst_p2p_lan_service.moc"

// SPDX-License-Identifier: MIT
#include "Base/Task.h"
#include "Conversation/OpenChat.h"
#include "Encryption/MessengerCrypto.h"
#include "Model/DerivedJson.h"
#include "Support/TestMain.h"

#include <QSignalSpy>
#include <QTcpServer>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QByteArray target = "/api/messenger/chats/c/messages";

MessengerPoll poll(bool voted) {
    MessengerPoll poll;
    poll.id = u"p"_s;
    poll.question = u"Tea?"_s;
    poll.createdAt = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    const QSet<QString> voters = voted ? QSet<QString>{"7", "9"} : QSet<QString>{"9"};
    poll.options = {PollOption{u"a"_s, u"A"_s, voters}, PollOption{u"b"_s, u"B"_s, {}},
                    PollOption{u"d"_s, u"D"_s, voters}};
    return poll;
}

/// A client at the other end of a direct link: its channel listens, and writes down what comes.
struct DirectPeer {
    QTemporaryDir folder;
    MessengerSession session{std::make_unique<FaultySecretStore>(std::make_shared<StoredSecrets>()),
                             std::make_unique<UserDefaults>(folder.filePath(u"defaults.ini"_s))};
    MessengerP2PDataChannel channel{session, 0, 0};
    QList<QJsonObject> received;

    DirectPeer() {
        channel.onMessage = [this](const QString &, const QString &, const QJsonObject &message) {
            received.append(message);
        };
        channel.start();
    }
};

} // namespace

class TestChatSending : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aLineWithASlashIsACommand_data();
    void aLineWithASlashIsACommand();
    void aReplyNamesItsMessageAndClosesTheBanner();
    void aTextThatFailsIsQueuedWithTheKeyOfItsRequest();
    void theDirectLinkComesAfterTheServer_data();
    void theDirectLinkComesAfterTheServer();
    void stickersAndPollsAreSentOnceAndNeverQueued_data();
    void stickersAndPollsAreSentOnceAndNeverQueued();
    void aVoteIsToldOptionByOption();
};

void TestChatSending::aLineWithASlashIsACommand_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("exports");
    QTest::newRow("export") << "/export" << true;
    QTest::newRow("capitals and more words") << "/EXPORT now" << true;
    QTest::newRow("another word") << "/exports" << false;
    QTest::newRow("a slash alone") << "/" << false;
    QTest::newRow("two slashes") << "//export" << false;
}

void TestChatSending::aLineWithASlashIsACommand() {
    QFETCH(QString, line);
    QFETCH(bool, exports);
    OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "7", "two")});
    QSignalSpy exported(chat.screen.get(), &MessengerChatView::exportRequested);
    chat.screen->inputText = line;
    chat.screen->sendMessage();
    QCOMPARE(chat.screen->inputText.value(), QString());
    QCOMPARE(chat.screen->messages.count(), 2);
    QCOMPARE(exported.size(), exports ? 1 : 0);
    if (!exports)
        return;
    QCOMPARE(exported.first().first().toString(), u"one\ntwo\n"_s);
    const QString file = chat.folder.filePath(u"chat.md"_s);
    chat.screen->saveExport(QUrl::fromLocalFile(file), u"ж\n"_s);
    QTRY_VERIFY(QFile::exists(file));
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll(), QByteArray("ж\n"));
}

void TestChatSending::aReplyNamesItsMessageAndClosesTheBanner() {
    OpenChat chat({OpenChat::record("m1", "9")});
    chat.screen->replyTo(chat.message(0));
    QVERIFY(chat.screen->isInputFocused);
    chat.http.answerNext(ScriptedAnswer::of(500));
    chat.screen->inputText = u" /export"_s;
    chat.screen->sendMessage();
    QVERIFY(!chat.screen->replyToMessage.value());
    QCOMPARE(chat.message(1).replyToID, u"m1"_s);
    QTRY_COMPARE(chat.message(1).deliveryStatus, DeliveryStatus::failed);
    QCOMPARE(chat.bodySentTo(target),
             (QJsonObject{{"user_id", 7}, {"content", " /export"}, {"type", "text"}, {"reply_to", "m1"}}));
}

void TestChatSending::aTextThatFailsIsQueuedWithTheKeyOfItsRequest() {
    OpenChat chat;
    chat.http.answerNext(ScriptedAnswer::of(200, "{}"));
    chat.screen->inputText = u"hello"_s;
    chat.screen->sendMessage();
    const QString id = chat.message(0).id;
    QTRY_COMPARE(chat.message(0).deliveryStatus, DeliveryStatus::failed);
    chat.http.answerNext(ScriptedAnswer::of(200, R"({"message":{}})"));
    launch(chat.queue.drain());
    QTRY_COMPARE(chat.http.requests().size(), 2);
    QCOMPARE(chat.http.lastRequest().headers.value("idempotency-key"), id.toUtf8());
    QCOMPARE(chat.bodySentTo(target), (QJsonObject{{"user_id", 7}, {"content", "hello"}, {"type", "text"}}));
    // The bubble keeps its state until the next history.
    QCOMPARE(chat.message(0).deliveryStatus, DeliveryStatus::failed);
}

void TestChatSending::theDirectLinkComesAfterTheServer_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("direct");
    QTest::newRow("direct chat, sent") << int(ChatType::direct) << 200 << 1;
    QTest::newRow("direct chat, refused") << int(ChatType::direct) << 500 << 1;
    QTest::newRow("group, sent") << int(ChatType::group) << 200 << 0;
    QTest::newRow("group, refused: the first participant gets it") << int(ChatType::group) << 500 << 1;
}

void TestChatSending::theDirectLinkComesAfterTheServer() {
    QFETCH(int, type);
    QFETCH(int, answer);
    QFETCH(int, direct);
    DirectPeer peer;
    OpenChat chat({}, u"7"_s, ChatType(type));
    MessengerP2PDataChannel linked(chat.session, 0, peer.channel.listenedPort());
    ChatParts parts = chat.chatParts();
    parts.directChannel = [&]() -> MessengerP2PDataChannel & { return linked; };
    const auto screen =
        std::make_shared<MessengerChatView>(chat.screen->chat, chat.screen->contacts, u"7"_s, parts);
    linked.connect(u"9"_s, u"127.0.0.1"_s);
    QTRY_COMPARE(linked.connectedPeerIds(), QSet<QString>{"9"});
    chat.http.answerNext(ScriptedAnswer::of(answer, R"({"message":{}})"));
    screen->inputText = u"hello"_s;
    screen->sendMessage();
    QTRY_COMPARE(screen->messages.at(0).deliveryStatus, DeliveryStatus::sent);
    // A last message of its own tells that whatever went before it has arrived.
    QVERIFY(linked.send(u"9"_s, u"c"_s, {{"id", "last"}}));
    QTRY_VERIFY(!peer.received.isEmpty() && json::text(peer.received.last(), u"id") == u"last"_s);
    QCOMPARE(peer.received.size(), direct + 1);
    if (direct == 0)
        return;
    QJsonObject record = peer.received.first();
    QVERIFY(json::number(record, u"created_at").value() > 1.7e9);
    record.remove(u"created_at"_s);
    QCOMPARE(record, (QJsonObject{{"id", screen->messages.at(0).id},
                                  {"sender_id", "7"},
                                  {"content", "hello"},
                                  {"type", "text"},
                                  {"p2p", true}}));
}

void TestChatSending::stickersAndPollsAreSentOnceAndNeverQueued_data() {
    QTest::addColumn<bool>("sticker");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("sent");
    for (const bool sticker : {true, false}) {
        QTest::addRow("%s, sent", sticker ? "sticker" : "poll")
            << sticker << QByteArray(R"({"message":{}})") << true;
        QTest::addRow("%s, no message", sticker ? "sticker" : "poll") << sticker << QByteArray("{}") << false;
    }
}

void TestChatSending::stickersAndPollsAreSentOnceAndNeverQueued() {
    QFETCH(bool, sticker);
    QFETCH(QByteArray, answer);
    QFETCH(bool, sent);
    OpenChat chat({OpenChat::record("m1", "9")});
    chat.screen->replyTo(chat.message(0));
    chat.http.answerNext(ScriptedAnswer::of(200, answer));
    if (sticker)
        chat.screen->sendSticker(u"🐕‍🦺"_s);
    else
        chat.screen->sendPoll(poll(false));
    QCOMPARE(chat.message(1).deliveryStatus, DeliveryStatus::sending);
    QTRY_COMPARE(chat.message(1).deliveryStatus, sent ? DeliveryStatus::sent : DeliveryStatus::failed);
    QVERIFY(chat.screen->replyToMessage.value() && !chat.message(1).replyToID);
    const QJsonObject body = chat.bodySentTo(target);
    QCOMPARE(json::text(body, u"type"), sticker ? u"sticker"_s : u"poll"_s);
    const QString content = json::text(body, u"content").value();
    if (sticker)
        QCOMPARE(content, u"🐕‍🦺"_s);
    else
        QVERIFY(derived::fromJson<MessengerPoll>(json::parseObject(content.toUtf8()).value()) == poll(false));
    QVERIFY(chat.http.lastRequest().headers.value("idempotency-key") != chat.message(1).id.toUtf8());
    const qsizetype requests = chat.http.requests().size();
    launch(chat.queue.drain());
    chat.screen->sendSticker(u"x"_s);
    QTRY_COMPARE(chat.http.requests().size(), requests + 1);
}

void TestChatSending::aVoteIsToldOptionByOption() {
    OpenChat chat;
    chat.socket.connect(u"tok"_s);
    chat.screen->sendPoll(poll(false));
    QTRY_COMPARE(chat.events.connections(), 1);
    chat.screen->votePoll(poll(true));
    QVERIFY(chat.message(0).poll == poll(true));
    const QList<QJsonObject> votes = chat.frames(u"poll_vote"_s);
    QCOMPARE(votes.size(), 2);
    QCOMPARE(votes.first(), (QJsonObject{{"type", "poll_vote"},
                                         {"user_id", "7"},
                                         {"poll_id", "p"},
                                         {"option_id", "a"},
                                         {"chat_id", "c"}}));
    QCOMPARE(json::text(votes.last(), u"option_id"), u"d"_s);
    // Taken back: the list changes, nobody is told.
    chat.screen->votePoll(poll(false));
    QVERIFY(chat.message(0).poll == poll(false));
    MessengerPoll unknown = poll(true);
    unknown.id = u"other"_s;
    chat.screen->votePoll(unknown);
    QCOMPARE(chat.frames(u"poll_vote"_s).size(), 2);
}

ORVANE_TEST_MAIN(TestChatSending)
#include "tst_chat_sending.moc"

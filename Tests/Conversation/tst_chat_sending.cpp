// SPDX-License-Identifier: MIT
#include "Base/Task.h"
#include "Conversation/OpenChat.h"
#include "Model/DerivedJson.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr auto sent = DeliveryStatus::sent;
constexpr auto failed = DeliveryStatus::failed;

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
    void aTextGoesOutAsTyped() {
        const auto row = [](const QString &user, const QString &text, qint64 userId) {
            const InRow named(text.left(50).toUtf8());
            OpenChat chat({}, user);
            chat.say(text);
            QVERIFY(chat.screen->inputText.value().isEmpty());
            QCOMPARE(chat.screen->messages.count(), 1);
            const MessengerMessage local = chat.message(0);
            QCOMPARE(local.content, text);
            QCOMPARE(local.senderID, user);
            QCOMPARE(local.deliveryStatus, DeliveryStatus::sending);
            QCOMPARE(local.id, local.id.toUpper());
            QTRY_COMPARE(chat.http.requests().size(), 1);
            const RecordedRequest request = chat.http.lastRequest();
            QCOMPARE(request.method + ' ' + request.target, "POST " + OpenChat::target);
            QCOMPARE(request.headers.value("idempotency-key"), local.id.toUtf8());
            QCOMPARE(request.headers.value("authorization"), "Bearer tok");
            QCOMPARE(json::parseObject(request.body).value(),
                     (QJsonObject{{"user_id", userId}, {"content", text}, {"type", "text"}}));
        };
        row(u"7"_s, u"  hello \n"_s, 7);
        row(u"7"_s, u"👩‍👩‍👧 \"\\ שלום\u202e"_s, 7);
        row(u"me"_s, u"x"_s, 0);
        row(u"7"_s, QString(1'000'000, u'ж'), 7);
        OpenChat chat;
        for (const QString &blank : {u""_s, u"   "_s, u"\n\t \u00a0\u2003\n"_s}) {
            chat.say(blank);
            QCOMPARE(chat.screen->inputText.value(), blank);
            QCOMPARE(chat.screen->messages.count(), 0);
        }
    }

    void theAnswerDecidesTheStatus() {
        const auto row = [](int status, const QByteArray &body, DeliveryStatus expected) {
            const InRow named(QByteArray::number(status) + body);
            OpenChat chat;
            chat.http.answerNext(ScriptedAnswer::of(status, body));
            chat.say(u"x"_s);
            const QString id = chat.message(0).id;
            QTRY_COMPARE(chat.message(0).deliveryStatus, expected);
            QCOMPARE(chat.ids(), id);
        };
        row(200, R"({"message":{"id":"server"}})", sent);
        row(201, R"({"message":{}})", sent);
        row(200, "{}", failed);
        row(200, R"({"message":"ok"})", failed);
        row(200, "[]", failed);
        row(200, "<html>", failed);
        row(204, "", failed);
        row(403, R"({"message":{}})", failed);
    }

    void twoSendsAreSettledEachByItsOwnAnswer() {
        OpenChat chat;
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::posted).heldBack());
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::posted));
        chat.say(u"first"_s);
        QTRY_COMPARE(chat.http.requests().size(), 1);
        chat.say(u"second"_s);
        QTRY_COMPARE(chat.message(1).deliveryStatus, sent);
        QCOMPARE(chat.message(0).deliveryStatus, DeliveryStatus::sending);
        chat.http.release();
        QTRY_COMPARE(chat.message(0).deliveryStatus, sent);
    }

    void aSendOutlivesItsScreen() {
        OpenChat chat;
        const std::weak_ptr<MessengerChatView> watched = chat.screen;
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::posted).heldBack());
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::answer({})).heldBack());
        chat.say(u"x"_s);
        chat.screen->loadMessages();
        QTRY_COMPARE(chat.http.requests().size(), 2);
        chat.screen.reset();
        QVERIFY(!watched.expired());
        chat.http.release();
        QTRY_VERIFY(watched.expired());
        // Nobody follows the events of a screen that is gone.
        chat.arrive(R"({"type":"messenger_message","chat_id":"c","message":)" +
                    OpenChat::record("late", "9") + "}");
    }

    void aLineWithASlashIsACommand() {
        const auto row = [](const QString &line, bool exports) {
            const InRow named(line.toUtf8());
            OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "7", "two")});
            const QSignalSpy exported(chat.screen.get(), &MessengerChatView::exportRequested);
            chat.say(line);
            QCOMPARE(chat.screen->inputText.value(), QString());
            QCOMPARE(chat.screen->messages.count(), 2);
            QCOMPARE(exported.size(), exports ? 1 : 0);
            if (exports)
                QCOMPARE(exported.first().first().toString(), "one\ntwo\n");
        };
        row(u"/export"_s, true);
        row(u"/EXPORT now"_s, true);
        for (const QString &line : {u"/exports"_s, u"/"_s, u"//export"_s})
            row(line, false);
        OpenChat chat;
        const QString file = chat.folder.filePath(u"chat.md"_s);
        chat.screen->saveExport(QUrl::fromLocalFile(file), u"ж\n"_s);
        QTRY_VERIFY(QFile::exists(file));
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), "ж\n");
    }

    void aReplyNamesItsMessageAndClosesTheBanner() {
        OpenChat chat({OpenChat::record("m1", "9")});
        chat.screen->replyTo(chat.message(0));
        QVERIFY(chat.screen->isInputFocused);
        chat.http.answerNext(ScriptedAnswer::of(500));
        chat.say(u" /export"_s);
        QVERIFY(!chat.screen->replyToMessage.value());
        QCOMPARE(chat.message(1).replyToID, u"m1"_s);
        QTRY_COMPARE(chat.message(1).deliveryStatus, failed);
        QCOMPARE(
            chat.bodySentTo(OpenChat::target),
            (QJsonObject{{"user_id", 7}, {"content", " /export"}, {"type", "text"}, {"reply_to", "m1"}}));
    }

    void aTextThatFailsIsQueuedWithTheKeyOfItsRequest() {
        OpenChat chat;
        chat.http.answerNext(ScriptedAnswer::of(200, "{}"));
        chat.say(u"hello"_s);
        const QString id = chat.message(0).id;
        QTRY_COMPARE(chat.message(0).deliveryStatus, failed);
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::posted));
        launch(chat.queue.drain());
        QTRY_COMPARE(chat.http.requests().size(), 2);
        QCOMPARE(chat.http.lastRequest().headers.value("idempotency-key"), id.toUtf8());
        QCOMPARE(chat.bodySentTo(OpenChat::target),
                 (QJsonObject{{"user_id", 7}, {"content", "hello"}, {"type", "text"}}));
        // The bubble keeps its state until the next history.
        QCOMPARE(chat.message(0).deliveryStatus, failed);
    }

    void theDirectLinkComesAfterTheServer() {
        const auto row = [](ChatType type, int answer, bool direct) {
            const InRow named(rawText(type).toUtf8() + QByteArray::number(answer));
            DirectPeer peer;
            OpenChat chat({}, u"7"_s, type);
            MessengerP2PDataChannel linked(chat.session, 0, peer.channel.listenedPort());
            ChatParts parts = chat.chatParts();
            parts.directChannel = [&]() -> MessengerP2PDataChannel & { return linked; };
            chat.screen =
                std::make_shared<MessengerChatView>(chat.screen->chat, chat.screen->contacts, u"7"_s, parts);
            linked.connect(u"9"_s, u"127.0.0.1"_s);
            QTRY_COMPARE(linked.connectedPeerIds(), QSet<QString>{"9"});
            chat.http.answerNext(ScriptedAnswer::of(answer, OpenChat::posted));
            chat.say(u"hello"_s);
            QTRY_COMPARE(chat.message(0).deliveryStatus, sent);
            // A last message of its own tells that whatever went before it has arrived.
            QVERIFY(linked.send(u"9"_s, u"c"_s, {{"id", "last"}}));
            QTRY_VERIFY(!peer.received.isEmpty() && peer.received.last().value("id") == "last");
            QCOMPARE(peer.received.size(), direct ? 2 : 1);
            QJsonObject record = peer.received.first();
            if (!direct)
                return;
            QVERIFY(record.take("created_at").toDouble() > 1.7e9);
            QCOMPARE(record, (QJsonObject{{"id", chat.message(0).id},
                                          {"sender_id", "7"},
                                          {"content", "hello"},
                                          {"type", "text"},
                                          {"p2p", true}}));
        };
        row(ChatType::direct, 200, true);
        row(ChatType::direct, 500, true);
        row(ChatType::group, 200, false);
        // The first participant gets it.
        row(ChatType::group, 500, true);
    }

    void stickersAndPollsAreSentOnceAndNeverQueued() {
        const auto row = [](bool sticker, const QByteArray &answer, DeliveryStatus status) {
            const InRow named((sticker ? "sticker " : "poll ") + answer);
            OpenChat chat({OpenChat::record("m1", "9")});
            chat.screen->replyTo(chat.message(0));
            chat.http.answerNext(ScriptedAnswer::of(200, answer));
            if (sticker)
                chat.screen->sendSticker(u"🐕‍🦺"_s);
            else
                chat.screen->sendPoll(poll(false));
            QCOMPARE(chat.message(1).deliveryStatus, DeliveryStatus::sending);
            QTRY_COMPARE(chat.message(1).deliveryStatus, status);
            QVERIFY(chat.screen->replyToMessage.value() && !chat.message(1).replyToID);
            const QJsonObject body = chat.bodySentTo(OpenChat::target);
            QCOMPARE(body.value("type"), sticker ? "sticker" : "poll");
            const QString content = body.value("content").toString();
            if (sticker)
                QCOMPARE(content, u"🐕‍🦺");
            else
                QVERIFY(derived::fromJson<MessengerPoll>(json::parseObject(content.toUtf8()).value()) ==
                        poll(false));
            QVERIFY(chat.http.lastRequest().headers.value("idempotency-key") != chat.message(1).id.toUtf8());
            const qsizetype requests = chat.http.requests().size();
            launch(chat.queue.drain());
            chat.screen->sendSticker(u"x"_s);
            QTRY_COMPARE(chat.http.requests().size(), requests + 1);
        };
        for (const bool sticker : {true, false}) {
            row(sticker, OpenChat::posted, sent);
            row(sticker, "{}", failed);
        }
    }

    void aVoteIsToldOptionByOption() {
        OpenChat chat;
        chat.socket.connect(u"tok"_s);
        chat.screen->sendPoll(poll(false));
        QTRY_COMPARE(chat.events.connections(), 1);
        chat.screen->votePoll(poll(true));
        QVERIFY(chat.message(0).poll == poll(true));
        const QList<QJsonObject> votes = chat.frames(u"poll_vote"_s);
        QCOMPARE(votes.size(), 2);
        QJsonObject vote{
            {"type", "poll_vote"}, {"user_id", "7"}, {"poll_id", "p"}, {"option_id", "a"}, {"chat_id", "c"}};
        QCOMPARE(votes.first(), vote);
        vote["option_id"] = "d";
        QCOMPARE(votes.last(), vote);
        // Taken back: the list changes, nobody is told.
        chat.screen->votePoll(poll(false));
        QVERIFY(chat.message(0).poll == poll(false));
        MessengerPoll unknown = poll(true);
        unknown.id = u"other"_s;
        chat.screen->votePoll(unknown);
        QCOMPARE(chat.frames(u"poll_vote"_s).size(), 2);
    }
};

ORVANE_TEST_MAIN(TestChatSending)
#include "tst_chat_sending.moc"

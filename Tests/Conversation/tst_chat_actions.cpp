// SPDX-License-Identifier: MIT
#include "Conversation/OpenChat.h"
#include "Support/TestMain.h"

using namespace Qt::StringLiterals;

using namespace orvane;

class TestChatActions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatTheServerRefusesIsUndone_data();
    void whatTheServerRefusesIsUndone();
    void anEditIsTrimmedAndWaitsForTheServer_data();
    void anEditIsTrimmedAndWaitsForTheServer();
    void aDeletionTakesEveryRecordOfTheId();
    void aReactionIsWhatTheServerMakesOfIt_data();
    void aReactionIsWhatTheServerMakesOfIt();
    void oneTranslationAtATime();
    void aForwardedTextSaysWhereItCameFrom();
    void chatsToForwardToLeaveOutThisOne_data();
    void chatsToForwardToLeaveOutThisOne();
    void anAnswerMayComeAfterTheMessageIsGone();
    void aBotIsKnownByItsRecord_data();
    void aBotIsKnownByItsRecord();
    void whatIsCopiedIsWhatIsRead();
    void onlyTheOpenScreenIsTheActiveChat();
};

void TestChatActions::whatTheServerRefusesIsUndone_data() {
    QTest::addColumn<int>("status");
    QTest::newRow("done") << 200;
    QTest::newRow("refused") << 500;
}

void TestChatActions::whatTheServerRefusesIsUndone() {
    QFETCH(int, status);
    OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "7", "two")});
    const bool done = status == 200;
    const auto answer = [&] {
        chat.http.answerNext(ScriptedAnswer::of(status, R"({"success":true,"is_starred":true})"));
    };
    answer();
    chat.screen->pinUnpinMessage(chat.message(1));
    QCOMPARE(chat.screen->pinnedMessages().size(), 1);
    QTRY_COMPARE(chat.http.requests().size(), 2);
    QTRY_COMPARE(chat.screen->isPinned(u"m2"_s), done);
    answer();
    chat.screen->toggleStar(chat.message(0));
    QVERIFY(chat.message(0).isStarred);
    QTRY_COMPARE(chat.http.requests().size(), 3);
    QTRY_COMPARE(chat.message(0).isStarred, done);
    if (!done)
        return;
    answer();
    chat.screen->pinUnpinMessage(chat.message(1));
    QVERIFY(chat.screen->pinnedMessages().isEmpty());
    QTRY_COMPARE(chat.http.lastRequest().target, QByteArray("/api/messenger/chats/c/messages/unpin"));
}

void TestChatActions::anEditIsTrimmedAndWaitsForTheServer_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("after");
    QTest::newRow("done") << " new \n" << 200 << "new";
    QTest::newRow("refused") << "new" << 403 << "old";
    QTest::newRow("blank") << " \n" << 200 << "old";
}

void TestChatActions::anEditIsTrimmedAndWaitsForTheServer() {
    QFETCH(QString, text);
    QFETCH(int, status);
    QFETCH(QString, after);
    OpenChat chat({OpenChat::record("m1", "7", "old")});
    chat.screen->editLastOwnMessage();
    QVERIFY(chat.screen->showEditAlert);
    QCOMPARE(chat.screen->editText.value(), u"old"_s);
    chat.http.answerFor("/api/messenger/messages/m1", ScriptedAnswer::of(status, "{}"));
    chat.screen->editText = text;
    chat.screen->saveEdit();
    QVERIFY(!chat.screen->showEditAlert);
    QCOMPARE(chat.message(0).content, u"old"_s);
    const bool sent = text.trimmed() == "new"_L1;
    if (sent)
        QTRY_COMPARE(chat.http.requests().size(), 2);
    // With the answer to a later request, the edit's is there too, and a blank edit can't be under way.
    chat.http.answerNext(ScriptedAnswer::of(200, R"({"reactions":[{"emoji":"👍","user_id":7}]})"));
    chat.screen->reactToMessage(chat.message(0), u"👍"_s);
    QTRY_COMPARE(chat.message(0).reactions.size(), 1);
    QCOMPARE(chat.http.requests().size(), sent ? 3 : 2);
    QCOMPARE(chat.message(0).content, after);
    QCOMPARE(chat.message(0).editedAt.has_value(), after == "new"_L1);
}

void TestChatActions::aDeletionTakesEveryRecordOfTheId() {
    OpenChat chat({OpenChat::record("m1", "7"), OpenChat::record("m2", "7"), OpenChat::record("m1", "7")});
    chat.screen->deleteMessage(chat.message(0));
    chat.screen->keepMessage();
    chat.screen->performDelete();
    QCOMPARE(chat.screen->messages.count(), 3);
    chat.screen->deleteMessage(chat.message(0));
    chat.http.answerNext(ScriptedAnswer::of(200, R"({"success":true})"));
    chat.screen->performDelete();
    QTRY_COMPARE(chat.screen->messages.count(), 1);
    QCOMPARE(chat.http.requests().size(), 2);
    QCOMPARE(chat.message(0).id, u"m2"_s);
}

void TestChatActions::aReactionIsWhatTheServerMakesOfIt_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("count");
    QTest::newRow("list") << QByteArray(R"({"reactions":[{"emoji":"👍","user_id":7}]})") << 1;
    QTest::newRow("taken back") << QByteArray(R"({"reactions":[]})") << 0;
    QTest::newRow("no list") << QByteArray(R"({"reactions":"👍"})") << 2;
    QTest::newRow("no JSON") << QByteArray("<html>") << 2;
}

void TestChatActions::aReactionIsWhatTheServerMakesOfIt() {
    QFETCH(QByteArray, answer);
    QFETCH(int, count);
    OpenChat chat({OpenChat::record("m1", "9")});
    chat.screen->changeAt(0, [](MessengerMessage &message) {
        message.reactions = {{u"🔥"_s, {"9"}}, {u"👏"_s, {"9"}}};
    });
    chat.http.answerNext(ScriptedAnswer::of(200, answer).heldBack());
    chat.screen->reactToMessage(chat.message(0), u"👍"_s);
    QTRY_COMPARE(chat.http.requests().size(), 2);
    QCOMPARE(chat.message(0).reactions.size(), 2);
    chat.http.release();
    QTRY_COMPARE(chat.message(0).reactions.size(), count);
}

void TestChatActions::oneTranslationAtATime() {
    OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "9", "two")});
    chat.http.answerNext(ScriptedAnswer::of(200, R"({"translated":"раз"})").heldBack());
    chat.screen->translateAction(chat.message(0));
    chat.screen->translateAction(chat.message(1));
    QTRY_COMPARE(chat.http.requests().size(), 2);
    QCOMPARE(chat.screen->translatingMsgID.value(), u"m1"_s);
    chat.http.release();
    QTRY_VERIFY(!chat.screen->translatingMsgID.value());
    QCOMPARE(chat.screen->translatedText.value(), (QVariantMap{{"m1", "раз"}}));
    chat.http.answerNext(ScriptedAnswer::of(503));
    chat.screen->translateAction(chat.message(1));
    QTRY_VERIFY(!chat.screen->translatingMsgID.value());
    QCOMPARE(chat.screen->translatedText.value().size(), 1);
    QCOMPARE(json::text(chat.bodySentTo(chat.http.lastRequest().target), u"target_lang"), u"ru"_s);
}

void TestChatActions::aForwardedTextSaysWhereItCameFrom() {
    OpenChat chat({OpenChat::record("m1", "9", "one")});
    MessengerChat other;
    other.id = u"d"_s;
    chat.screen->forwardMessage(other);
    QCOMPARE(chat.http.requests().size(), 1);
    chat.screen->pickForward(chat.message(0));
    chat.screen->forwardMessage(other);
    QVERIFY(!chat.screen->showForwardPicker && !chat.screen->messageToForward.value());
    QTRY_COMPARE(chat.http.requests().size(), 2);
    QJsonObject body = chat.bodySentTo("/api/messenger/chats/d/messages");
    QJsonObject from = json::object(body, u"forwarded_from").value();
    QVERIFY(json::number(from, u"forwarded_at").value() > 1.7e9);
    from.remove(u"forwarded_at"_s);
    QCOMPARE(from,
             (QJsonObject{
                 {"original_chat_id", "c"}, {"original_sender_id", "9"}, {"original_sender_name", "Ben"}}));
    body.remove(u"forwarded_from"_s);
    QCOMPARE(body, (QJsonObject{{"user_id", 7}, {"content", "one"}, {"type", "text"}}));
    QCOMPARE(chat.screen->messages.count(), 1);
}

void TestChatActions::chatsToForwardToLeaveOutThisOne_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("count");
    QTest::newRow("the server's") << 200 << 1;
    QTest::newRow("samples") << 500 << 4;
}

void TestChatActions::chatsToForwardToLeaveOutThisOne() {
    QFETCH(int, status);
    QFETCH(int, count);
    OpenChat chat;
    chat.http.answerFor(
        "/api/messenger/chats",
        ScriptedAnswer::of(status, R"({"chats":[{"id":"c","type":"direct"},{"id":"d","type":"group"}]})"));
    chat.screen->appear();
    QTRY_COMPARE(chat.screen->availableChats.value().size(), count);
}

void TestChatActions::anAnswerMayComeAfterTheMessageIsGone() {
    OpenChat chat({OpenChat::record("m1", "7")});
    const MessengerMessage message = chat.message(0);
    for (int answer = 0; answer < 3; ++answer)
        chat.http.answerNext(
            ScriptedAnswer::of(200, R"({"reactions":[{"emoji":"👍","user_id":7}]})").heldBack());
    chat.screen->reactToMessage(message, u"👍"_s);
    chat.screen->editMessage(message);
    chat.screen->editText = u"new"_s;
    chat.screen->saveEdit();
    chat.screen->deleteMessage(message);
    chat.screen->performDelete();
    QTRY_COMPARE(chat.http.requests().size(), 4);
    chat.screen->removeAll(u"m1"_s);
    const std::weak_ptr<MessengerChatView> watched = chat.screen;
    chat.screen.reset();
    chat.http.release();
    QTRY_VERIFY(watched.expired());
}

void TestChatActions::aBotIsKnownByItsRecord_data() {
    QTest::addColumn<QByteArray>("users");
    QTest::addColumn<QString>("name");
    QTest::newRow("flag") << QByteArray(R"([{"username":"x","is_bot":true,"display_name":"Helper"}])")
                          << "Helper";
    QTest::newRow("name") << QByteArray(R"([{"username":"bot_echo"}])") << "bot_echo";
    QTest::newRow("a person") << QByteArray(R"([{"username":"ben","display_name":"Ben"}])") << QString();
    QTest::newRow("only the second") << QByteArray(R"([{"username":"ben"},{"username":"bot_echo"}])")
                                     << QString();
    QTest::newRow("nobody") << QByteArray("[]") << QString();
}

void TestChatActions::aBotIsKnownByItsRecord() {
    QFETCH(QByteArray, users);
    QFETCH(QString, name);
    OpenChat chat;
    chat.http.answerFor("/api/messenger/users/search", ScriptedAnswer::of(200, R"({"users":)" + users + "}"));
    chat.screen->appear();
    QTRY_VERIFY(!chat.screen->availableChats.value().isEmpty() || chat.http.requests().size() >= 3);
    QTRY_COMPARE(chat.screen->activeBotName.value().value_or(QString()), name);
    QCOMPARE(chat.screen->activeBotId.value().has_value(), !name.isEmpty());
}

void TestChatActions::whatIsCopiedIsWhatIsRead() {
    OpenChat chat({OpenChat::record("m1", "9", "<b>x</b>")});
    chat.screen->copyMessage(chat.message(0));
    QCOMPARE(chat.engines->copied, QStringList{"<b>x</b>"});
}

void TestChatActions::onlyTheOpenScreenIsTheActiveChat() {
    OpenChat chat;
    chat.screen->appear();
    QCOMPARE(chat.notifications.activeChatID, u"c"_s);
    chat.notifications.activeChatID = u"next"_s;
    chat.screen->disappear();
    QCOMPARE(chat.notifications.activeChatID, u"next"_s);
    chat.screen->appear();
    chat.screen->disappear();
    QVERIFY(!chat.notifications.activeChatID);
}

ORVANE_TEST_MAIN(TestChatActions)
#include "tst_chat_actions.moc"

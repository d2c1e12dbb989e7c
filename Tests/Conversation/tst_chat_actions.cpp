// SPDX-License-Identifier: MIT
#include "Conversation/OpenChat.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

ScriptedAnswer ok(const QByteArray &body) {
    return ScriptedAnswer::of(200, body);
}

const QByteArray oneReaction = R"({"reactions":[{"emoji":"👍","user_id":7}]})";

} // namespace

class TestChatActions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatTheServerRefusesIsUndone() {
        for (const bool done : {true, false}) {
            const InRow row(done ? "done" : "refused");
            OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "7", "two")});
            MessagePins &pins = *chat.screen->pins();
            const auto answer = [&] {
                chat.http.answerNext(
                    ScriptedAnswer::of(done ? 200 : 500, R"({"success":true,"is_starred":true})"));
            };
            answer();
            chat.screen->pinUnpinMessage(chat.message(1));
            QCOMPARE(pins.pinnedMessages(), QList{chat.message(1)});
            QTRY_COMPARE(chat.http.requests().size(), 2);
            QTRY_COMPARE(pins.isPinned(u"m2"_s), done);
            answer();
            chat.screen->toggleStar(chat.message(0));
            QVERIFY(chat.message(0).isStarred);
            QTRY_COMPARE(chat.http.requests().size(), 3);
            QTRY_COMPARE(chat.message(0).isStarred, done);
            QCOMPARE(chat.http.lastRequest().method, "POST");
            if (!done)
                continue;
            answer();
            chat.screen->toggleStar(chat.message(0));
            QTRY_COMPARE(chat.http.lastRequest().method, "DELETE");
            // A pin outlives its message.
            chat.screen->messages.removeAll(u"m2"_s);
            QVERIFY(pins.pinnedMessages().isEmpty() && pins.isPinned(u"m2"_s));
            answer();
            MessengerMessage gone;
            gone.id = u"m2"_s;
            chat.screen->pinUnpinMessage(gone);
            QVERIFY(!pins.isPinned(u"m2"_s));
            QTRY_COMPARE(chat.http.lastRequest().target, "/api/messenger/chats/c/messages/unpin");
        }
    }

    void anEditIsTrimmedAndWaitsForTheServer() {
        const auto row = [](const QString &text, int status, const QString &after) {
            const InRow named(text.toUtf8());
            OpenChat chat({OpenChat::record("m1", "7", "old"), OpenChat::record("m2", "9", "other")});
            chat.screen->editLastOwnMessage();
            QVERIFY(chat.screen->showEditAlert);
            QCOMPARE(chat.screen->editText.value(), "old");
            chat.http.answerFor("/api/messenger/messages/m1", ScriptedAnswer::of(status, "{}"));
            chat.screen->editText = text;
            chat.screen->editing()->save();
            QVERIFY(!chat.screen->showEditAlert);
            QCOMPARE(chat.message(0).content, "old");
            const bool sent = text.trimmed() == "new"_L1;
            if (sent)
                QTRY_COMPARE(chat.http.requests().size(), 2);
            // With the answer to a later request, the edit's is there too, and a blank edit can't be under
            // way.
            chat.http.answerNext(ok(oneReaction));
            chat.screen->reactToMessage(chat.message(0), u"👍"_s);
            QTRY_COMPARE(chat.message(0).reactions.size(), 1);
            QCOMPARE(chat.http.requests().size(), sent ? 3 : 2);
            QCOMPARE(chat.message(0).content, after);
            QCOMPARE(chat.message(0).editedAt.has_value(), after == "new"_L1);
        };
        row(u" new \n"_s, 200, u"new"_s);
        row(u"new"_s, 403, u"old"_s);
        row(u" \n"_s, 200, u"old"_s);
    }

    void aDeletionTakesEveryRecordOfTheId() {
        OpenChat chat(
            {OpenChat::record("m1", "7"), OpenChat::record("m2", "7"), OpenChat::record("m1", "7")});
        chat.screen->deleteMessage(chat.message(0));
        chat.screen->editing()->keep();
        chat.screen->performDelete();
        QCOMPARE(chat.screen->messages.count(), 3);
        chat.screen->deleteMessage(chat.message(0));
        chat.http.answerNext(ok(R"({"success":true})"));
        chat.screen->performDelete();
        QTRY_COMPARE(chat.ids(), "m2");
        QCOMPARE(chat.http.requests().size(), 2);
    }

    void aReactionIsWhatTheServerMakesOfIt() {
        const auto row = [](const QByteArray &answer, int count) {
            const InRow named(answer);
            OpenChat chat({OpenChat::record("m1", "9")});
            chat.screen->messages.changeAt(0, [](MessengerMessage &message) {
                message.reactions = {{u"🔥"_s, {"9"}}, {u"👏"_s, {"9"}}};
            });
            chat.http.answerNext(ok(answer).heldBack());
            chat.screen->reactToMessage(chat.message(0), u"👍"_s);
            QTRY_COMPARE(chat.http.requests().size(), 2);
            QCOMPARE(chat.message(0).reactions.size(), 2);
            chat.http.release();
            QTRY_COMPARE(chat.message(0).reactions.size(), count);
        };
        row(oneReaction, 1);
        row(R"({"reactions":[]})", 0);
        row(R"({"reactions":"👍"})", 2);
        row("<html>", 2);
    }

    void oneTranslationAtATime() {
        OpenChat chat({OpenChat::record("m1", "9", "one"), OpenChat::record("m2", "9", "two")});
        chat.http.answerNext(ok(R"({"translated":"раз"})").heldBack());
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
        QCOMPARE(chat.bodySentTo(chat.http.lastRequest().target).value("target_lang"), "ru");
    }

    void aForwardedTextSaysWhereItCameFrom() {
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
        QJsonObject from = body.take("forwarded_from").toObject();
        QVERIFY(from.take("forwarded_at").toDouble() > 1.7e9);
        QCOMPARE(from, (QJsonObject{{"original_chat_id", "c"},
                                    {"original_sender_id", "9"},
                                    {"original_sender_name", "Ben"}}));
        QCOMPARE(body, (QJsonObject{{"user_id", 7}, {"content", "one"}, {"type", "text"}}));
        QCOMPARE(chat.screen->messages.count(), 1);
    }

    void chatsToForwardToLeaveOutThisOne() {
        const auto row = [](int status, int count) {
            OpenChat chat;
            chat.http.answerFor(
                "/api/messenger/chats",
                ScriptedAnswer::of(status,
                                   R"({"chats":[{"id":"c","type":"direct"},{"id":"d","type":"group"}]})"));
            chat.screen->appear();
            QTRY_COMPARE(chat.screen->availableChats.value().size(), count);
        };
        row(200, 1);
        // The samples.
        row(500, 4);
    }

    void anAnswerMayComeAfterTheMessageIsGone() {
        OpenChat chat({OpenChat::record("m1", "7")});
        const MessengerMessage message = chat.message(0);
        for (int answer = 0; answer < 3; ++answer)
            chat.http.answerNext(ok(oneReaction).heldBack());
        chat.screen->reactToMessage(message, u"👍"_s);
        chat.screen->editMessage(message);
        chat.screen->editText = u"new"_s;
        chat.screen->editing()->save();
        chat.screen->deleteMessage(message);
        chat.screen->performDelete();
        QTRY_COMPARE(chat.http.requests().size(), 4);
        chat.screen->messages.removeAll(u"m1"_s);
        const std::weak_ptr<MessengerChatView> watched = chat.screen;
        chat.screen.reset();
        chat.http.release();
        QTRY_VERIFY(watched.expired());
    }

    void aBotIsKnownByItsRecord() {
        const auto row = [](const QByteArray &users, const QString &name) {
            const InRow named(users);
            OpenChat chat;
            chat.http.answerFor("/api/messenger/users/search", ok(R"({"users":)" + users + "}"));
            chat.screen->appear();
            QTRY_VERIFY(!chat.screen->availableChats.value().isEmpty() || chat.http.requests().size() >= 3);
            QTRY_COMPARE(chat.screen->activeBotName.value().value_or(QString()), name);
            QCOMPARE(chat.screen->activeBotId.value().has_value(), !name.isEmpty());
        };
        row(R"([{"username":"x","is_bot":true,"display_name":"Helper"}])", u"Helper"_s);
        row(R"([{"username":"bot_echo"}])", u"bot_echo"_s);
        row(R"([{"username":"ben","display_name":"Ben"}])", {});
        row(R"([{"username":"ben"},{"username":"bot_echo"}])", {});
        row("[]", {});
    }

    void whatIsCopiedIsWhatIsRead() {
        OpenChat chat({OpenChat::record("m1", "9", "<b>x</b>")});
        chat.screen->copyMessage(chat.message(0));
        QCOMPARE(chat.engines->copied, QStringList{"<b>x</b>"});
    }

    void onlyTheOpenScreenIsTheActiveChat() {
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

    void aSummaryHasASectionForEachListThatIsThere() {
        const auto row = [](int status, const QByteArray &answer, const QString &summary) {
            const InRow named(answer);
            OpenChat chat;
            chat.screen->chatSummary = u"before"_s;
            chat.http.answerNext(ScriptedAnswer::of(status, answer));
            chat.screen->summarizeAction(u"week"_s);
            QVERIFY(chat.screen->isSummarizing);
            QTRY_VERIFY(!chat.screen->isSummarizing);
            QCOMPARE(chat.screen->chatSummary.value(), summary);
            QCOMPARE(chat.bodySentTo("/api/chat/summarize"),
                     (QJsonObject{{"chat_id", "c"}, {"period", "week"}, {"user_id", 7}}));
        };
        row(200, R"({"summary":"S","key_points":["a","b"],"decisions":["c"],"action_items":["d","e"]})",
            u"S\n\n• a\n• b\n\n✓ c\n\n→ d\n→ e"_s);
        row(200, R"({"summary":"","key_points":["a"],"decisions":[]})", u"• a"_s);
        row(200, R"({"summary":"S","decisions":[1,2]})", u"S"_s);
        row(200, "{}", u""_s);
        row(500, "", u"before"_s);
    }

    void theAgentsAnswerIsShown() {
        const auto row = [](int status, const QByteArray &answer, const QString &response) {
            const InRow named(answer);
            OpenChat chat;
            chat.screen->aiResponse = u"before"_s;
            chat.screen->aiRequest = u" \n"_s;
            chat.screen->sendAgentMessage();
            QVERIFY(!chat.screen->isAILoading);
            QCOMPARE(chat.screen->aiRequest.value(), " \n");
            chat.http.answerNext(ScriptedAnswer::of(status, answer));
            chat.screen->aiRequest = u" what? "_s;
            chat.screen->sendAgentMessage();
            QCOMPARE(chat.screen->aiRequest.value(), "");
            QVERIFY(chat.screen->isAILoading);
            QTRY_VERIFY(!chat.screen->isAILoading);
            QCOMPARE(chat.screen->aiResponse.value()->left(response.size()), response);
            QCOMPARE(chat.bodySentTo(chat.http.lastRequest().target).value("message"), "what?");
        };
        row(200, R"({"reply":"yes"})", u"yes"_s);
        row(200, R"({"reply":5})", u"before"_s);
        row(200, R"({"reply":"yes","action":{}})", u"yes"_s);
        row(200, R"({"reply":"yes","action":{"type":"fly"}})", u"yes"_s);
        row(400, R"({"error":"no"})", u"[Error: "_s);
    }

    void anActionIsCarriedOut() {
        const auto row = [](const QByteArray &action, const QByteArray &answer, const QString &response,
                            const QStringList &results) {
            const InRow named(action);
            OpenChat chat;
            chat.http.answerNext(ok(R"({"reply":"yes","action":)" + action + "}"));
            chat.http.answerNext(ok(answer));
            chat.screen->aiRequest = u"do"_s;
            chat.screen->sendAgentMessage();
            QTRY_COMPARE(chat.screen->aiResponse.value(), response);
            QTRY_COMPARE(chat.screen->agentResults.value(), results);
            QCOMPARE(chat.screen->showSearchPanel.value(), !results.isEmpty());
            QTRY_VERIFY(!chat.screen->isSummarizing);
        };
        row(R"({"type":"search","params":{"query":"tea"}})",
            R"({"results":[{"content":"a","text":"b"},{"text":"c"},{"id":"x"}]})", u"yes"_s, {"a", "c"});
        row(R"({"type":"translate","params":{"text":"tea"}})", R"({"response":" чай "})",
            u"yes\n\nПеревод (ru): чай"_s, {});
        row(R"({"type":"translate","params":{"text":"tea","to":"en"}})", "{}", u"yes\n\nПеревод (en): —"_s,
            {});
        row(R"({"type":"summarize","params":[]})", R"({"summary":"S","key_points":["a"],"decisions":["c"]})",
            u"yes\n\nS\n\n• a"_s, {});
    }

    void openingAnAssistedChatAnalyzesWhatIsThereThen() {
        OpenChat chat;
        MessengerChat assisted = chat.screen->chat;
        assisted.aiEnabled = true;
        const auto screen =
            std::make_shared<MessengerChatView>(assisted, chat.screen->contacts, u"7"_s, chat.chatParts());
        chat.http.answerFor("/api/chat/smart-reply", ok(R"({"replies":["a","b","c","d"]})"));
        chat.http.answerFor("/api/chat/persona-reply", ok(R"({"replies":["x"],"persona_samples":12})"));
        // The history never comes, and nothing waits for it.
        chat.http.answerFor(OpenChat::target, ok("{}").heldBack());
        MessengerMessage message;
        message.id = u"m"_s;
        message.senderID = u"9"_s;
        message.content = u"Tea?"_s;
        screen->messages.append(message);
        screen->appear();
        QTRY_COMPARE(screen->chatContext.value(), u"Последние сообщения: Собеседник: Tea?"_s);
        QTRY_VERIFY(!screen->smartReplies.value().isEmpty());
        screen->assistant()->closeContext();
        QVERIFY(!screen->chatContext.value());
    }
};

ORVANE_TEST_MAIN(TestChatActions)
#include "tst_chat_actions.moc"

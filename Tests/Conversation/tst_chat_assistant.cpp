// SPDX-License-Identifier: MIT
#include "Conversation/OpenChat.h"
#include "Support/TestMain.h"

using namespace Qt::StringLiterals;

using namespace orvane;

class TestChatAssistant : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSummaryHasASectionForEachListThatIsThere_data();
    void aSummaryHasASectionForEachListThatIsThere();
    void theAgentsAnswerIsShown_data();
    void theAgentsAnswerIsShown();
    void anActionIsCarriedOut_data();
    void anActionIsCarriedOut();
    void openingAnAssistedChatAnalyzesWhatIsThereThen();
};

void TestChatAssistant::aSummaryHasASectionForEachListThatIsThere_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("summary");
    QTest::newRow("all four") << 200 << QByteArray(R"({"summary":"S","key_points":["a","b"],"decisions":["c"],
                                                "action_items":["d","e"]})")
                              << u"S\n\n• a\n• b\n\n✓ c\n\n→ d\n→ e"_s;
    QTest::newRow("some are empty") << 200
                                    << QByteArray(R"({"summary":"","key_points":["a"],"decisions":[]})")
                                    << u"• a"_s;
    QTest::newRow("lists of something else")
        << 200 << QByteArray(R"({"summary":"S","decisions":[1,2]})") << u"S"_s;
    QTest::newRow("nothing") << 200 << QByteArray("{}") << QString();
    QTest::newRow("refused: as before") << 500 << QByteArray() << u"before"_s;
}

void TestChatAssistant::aSummaryHasASectionForEachListThatIsThere() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, summary);
    OpenChat chat;
    chat.screen->chatSummary = u"before"_s;
    chat.http.answerNext(ScriptedAnswer::of(status, answer));
    chat.screen->summarizeAction(u"week"_s);
    QVERIFY(chat.screen->isSummarizing);
    QTRY_VERIFY(!chat.screen->isSummarizing);
    QCOMPARE(chat.screen->chatSummary.value(), summary);
    QCOMPARE(chat.bodySentTo("/api/chat/summarize"),
             (QJsonObject{{"chat_id", "c"}, {"period", "week"}, {"user_id", 7}}));
}

void TestChatAssistant::theAgentsAnswerIsShown_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("response");
    QTest::newRow("reply") << 200 << QByteArray(R"({"reply":"yes"})") << "yes";
    QTest::newRow("reply of another type: as before") << 200 << QByteArray(R"({"reply":5})") << "before";
    QTest::newRow("action without a type") << 200 << QByteArray(R"({"reply":"yes","action":{}})") << "yes";
    QTest::newRow("unknown action") << 200 << QByteArray(R"({"reply":"yes","action":{"type":"fly"}})")
                                    << "yes";
    QTest::newRow("refused") << 400 << QByteArray(R"({"error":"no"})") << "[Error: ";
}

void TestChatAssistant::theAgentsAnswerIsShown() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, response);
    OpenChat chat;
    chat.screen->aiResponse = u"before"_s;
    chat.screen->aiRequest = u" \n"_s;
    chat.screen->sendAgentMessage();
    QVERIFY(!chat.screen->isAILoading);
    QCOMPARE(chat.screen->aiRequest.value(), u" \n"_s);
    chat.http.answerNext(ScriptedAnswer::of(status, answer));
    chat.screen->aiRequest = u" what? "_s;
    chat.screen->sendAgentMessage();
    QCOMPARE(chat.screen->aiRequest.value(), QString());
    QVERIFY(chat.screen->isAILoading);
    QTRY_VERIFY(!chat.screen->isAILoading);
    QVERIFY2(chat.screen->aiResponse.value()->startsWith(response),
             qPrintable(*chat.screen->aiResponse.value()));
    QCOMPARE(json::text(chat.bodySentTo(chat.http.lastRequest().target), u"message"), u"what?"_s);
}

void TestChatAssistant::anActionIsCarriedOut_data() {
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("response");
    QTest::addColumn<QStringList>("results");
    QTest::newRow("search") << QByteArray(R"({"type":"search","params":{"query":"tea"}})")
                            << QByteArray(
                                   R"({"results":[{"content":"a","text":"b"},{"text":"c"},{"id":"x"}]})")
                            << "yes" << QStringList{"a", "c"};
    QTest::newRow("translate") << QByteArray(R"({"type":"translate","params":{"text":"tea"}})")
                               << QByteArray(R"({"response":" чай "})") << u"yes\n\nПеревод (ru): чай"_s
                               << QStringList();
    QTest::newRow("translate, no answer")
        << QByteArray(R"({"type":"translate","params":{"text":"tea","to":"en"}})") << QByteArray("{}")
        << u"yes\n\nПеревод (en): —"_s << QStringList();
    QTest::newRow("summarize, params of another type")
        << QByteArray(R"({"type":"summarize","params":[]})")
        << QByteArray(R"({"summary":"S","key_points":["a"],"decisions":["c"]})") << u"yes\n\nS\n\n• a"_s
        << QStringList();
}

void TestChatAssistant::anActionIsCarriedOut() {
    QFETCH(QByteArray, action);
    QFETCH(QByteArray, answer);
    QFETCH(QString, response);
    QFETCH(QStringList, results);
    OpenChat chat;
    chat.http.answerNext(ScriptedAnswer::of(200, R"({"reply":"yes","action":)" + action + "}"));
    chat.http.answerNext(ScriptedAnswer::of(200, answer));
    chat.screen->aiRequest = u"do"_s;
    chat.screen->sendAgentMessage();
    QTRY_COMPARE(chat.screen->aiResponse.value(), response);
    QTRY_COMPARE(chat.screen->agentResults.value(), results);
    QCOMPARE(chat.screen->showSearchPanel.value(), !results.isEmpty());
    QTRY_VERIFY(!chat.screen->isSummarizing);
}

void TestChatAssistant::openingAnAssistedChatAnalyzesWhatIsThereThen() {
    OpenChat chat;
    MessengerChat assisted = chat.screen->chat;
    assisted.aiEnabled = true;
    const auto screen =
        std::make_shared<MessengerChatView>(assisted, chat.screen->contacts, u"7"_s, chat.chatParts());
    chat.http.answerFor("/api/chat/smart-reply", ScriptedAnswer::of(200, R"({"replies":["a","b","c","d"]})"));
    chat.http.answerFor("/api/chat/persona-reply",
                        ScriptedAnswer::of(200, R"({"replies":["x"],"persona_samples":12})"));
    // The history never comes, and nothing waits for it.
    chat.http.answerFor("/api/messenger/chats/c/messages", ScriptedAnswer::of(200, "{}").heldBack());
    MessengerMessage message;
    message.id = u"m"_s;
    message.senderID = u"9"_s;
    message.content = u"Tea?"_s;
    screen->messages.append(message);
    screen->appear();
    QTRY_COMPARE(screen->chatContext.value(), u"Последние сообщения: Собеседник: Tea?"_s);
    QTRY_VERIFY(!screen->smartReplies.value().isEmpty());
    screen->closeContext();
    QVERIFY(!screen->chatContext.value());
}

ORVANE_TEST_MAIN(TestChatAssistant)
#include "tst_chat_assistant.moc"

// SPDX-License-Identifier: MIT
#include "AI/MessengerAIService.h"
#include "HomeServer/Client.h"
#include "Support/Await.h"
#include "Support/ClientParts.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const auto smartPath = "/api/chat/smart-reply";
const auto personaPath = "/api/chat/persona-reply";

MessengerMessage message(const QString &senderID, const QString &content) {
    MessengerMessage message;
    message.senderID = senderID;
    message.content = content;
    return message;
}

// In turns from the other one ("9") and from the signed-in person ("7"), numbered from 0.
QList<MessengerMessage> conversation(int length) {
    QList<MessengerMessage> messages;
    for (int i = 0; i < length; ++i)
        messages.append(message(i % 2 == 0 ? u"9"_s : u"7"_s, QString::number(i)));
    return messages;
}

struct Parts : ClientParts {
    MessengerAIService service{api, http.base()};

    Parts() { signIn(); }

    QList<MessengerMessage> three = conversation(3);

    QJsonObject sent() const { return *json::parseObject(http.lastRequest().body); }
    QStringList smart(const QList<MessengerMessage> &messages) {
        return *outcomeOf(service.generateSmartReplies(messages, u"7"_s)).value;
    }
    PersonaReplies persona(const QList<MessengerMessage> &messages) {
        return *outcomeOf(service.generatePersonaReplies(messages, u"c"_s, u"7"_s)).value;
    }
    std::optional<ChatAnalysis> analysis(const QList<MessengerMessage> &messages) {
        return *outcomeOf(service.analyzeChat(messages, u"7"_s)).value;
    }
};

} // namespace

class TestAIService : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &) {
        Parts parts;
        parts.http.answerFor(smartPath, ScriptedAnswer::of(500));
        parts.http.answerFor(personaPath, ScriptedAnswer::of(200, "words from outside"));
        parts.persona({message(u"9"_s, u"words of a person"_s)});
        return 0;
    }

private Q_SLOTS:
    void rolesDifferByOperation_data();
    void rolesDifferByOperation();
    void repliesAreReadStrictly_data();
    void repliesAreReadStrictly();
    void withoutMessagesOnlyPersonaStaysSilent();
    void theDigestQuotesTheLastTen_data();
    void theDigestQuotesTheLastTen();
    void freeFormAnswers_data();
    void freeFormAnswers();
    void aPromptGoesOutWithoutTheToken();
    void translationsKnowTwoLanguages();
    void failuresAreLoggedWithoutAnyText();
    void nobodyHasToWaitForAnAnswer();
    void theHomeServerAnswers();
};

void TestAIService::rolesDifferByOperation_data() {
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("first");
    QTest::addColumn<QString>("ownRole");
    QTest::addColumn<QJsonValue>("userID");
    for (const int length : {3, 30}) {
        const int firstOfTen = std::max(0, length - 10);
        QTest::addRow("smart, %d", length) << "smart" << length << firstOfTen << "assistant" << QJsonValue(7);
        QTest::addRow("persona, %d", length)
            << "persona" << length << firstOfTen << "assistant" << QJsonValue(QJsonValue::Undefined);
        QTest::addRow("analysis, %d", length)
            << "analysis" << length << std::max(0, length - 20) << "user" << QJsonValue(0);
    }
}

void TestAIService::rolesDifferByOperation() {
    QFETCH(QString, operation);
    QFETCH(int, length);
    QFETCH(int, first);
    QFETCH(QString, ownRole);
    QFETCH(QJsonValue, userID);
    Parts parts;
    const auto messages = conversation(length);
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"replies":["ok"]})"));
    if (operation == "smart")
        parts.smart(messages);
    else if (operation == "persona")
        parts.persona(messages);
    else
        parts.analysis(messages);
    QCOMPARE(parts.http.requests().size(), 1);
    QCOMPARE(parts.http.lastRequest().target, operation == "persona" ? personaPath : smartPath);
    QCOMPARE(parts.sent().value(u"user_id"), userID);
    QCOMPARE(json::text(parts.sent(), u"chat_id").has_value(), operation == "persona");
    const QString othersRole = ownRole == "user" ? u"assistant"_s : u"user"_s;
    QJsonArray items;
    for (int i = first; i < length; ++i)
        items.append(
            QJsonObject{{"role", i % 2 == 0 ? othersRole : ownRole}, {"content", QString::number(i)}});
    QCOMPARE(parts.sent().value(u"messages").toArray(), items);
}

void TestAIService::repliesAreReadStrictly_data() {
    QTest::addColumn<ScriptedAnswer>("given");
    // Empty where the persona has to fall back.
    QTest::addColumn<QStringList>("few");
    QTest::addColumn<qint64>("samples");
    // Null where there is no analysis.
    QTest::addColumn<QString>("analysed");
    const QStringList none;
    const auto row = [](const char *name, const ScriptedAnswer &given, const QStringList &few, qint64 samples,
                        const char *analysed) {
        QTest::newRow(name) << given << few << samples << QString::fromLatin1(analysed);
    };
    const auto body = [](const char *bytes) { return ScriptedAnswer::of(200, bytes); };
    row("five", body(R"({"replies":["a","b","c","d","e"],"persona_samples":12})"), {"a", "b", "c"}, 12,
        "a,b,c,d,e");
    row("samples as text", body(R"({"replies":["a"],"persona_samples":"12"})"), {"a"}, 0, "a");
    row("a fraction", body(R"({"replies":["a"],"persona_samples":1.5})"), {"a"}, 0, "a");
    row("samples alone", body(R"({"persona_samples":12})"), none, 0, nullptr);
    row("empty list", body(R"({"replies":[],"persona_samples":12})"), none, 0, "");
    row("one is a number", body(R"({"replies":["a",1]})"), none, 0, nullptr);
    row("a text", body(R"({"replies":"abc"})"), none, 0, nullptr);
    row("no JSON", body("<html>"), none, 0, nullptr);
    row("refused", ScriptedAnswer::of(500, R"({"replies":["a"]})"), none, 0, nullptr);
    row("cut short", ScriptedAnswer::truncated(R"({"replies":["a"]})"), none, 0, nullptr);
    row("hung up", ScriptedAnswer::closed(), none, 0, nullptr);
}

void TestAIService::repliesAreReadStrictly() {
    QFETCH(ScriptedAnswer, given);
    QFETCH(QStringList, few);
    QFETCH(qint64, samples);
    QFETCH(QString, analysed);
    Parts parts;
    parts.http.answerFor(smartPath, given);
    QCOMPARE(parts.smart(parts.three), few);
    const auto analysis = parts.analysis(parts.three);
    QCOMPARE(analysis.has_value(), !analysed.isNull());
    if (analysis) {
        QCOMPARE(analysis->replies.join(u','), analysed);
        QVERIFY(analysis->unansweredQuestions.isEmpty());
    }
    parts.http.answerFor(personaPath, given);
    parts.http.answerFor(smartPath, ScriptedAnswer::of(200, R"({"replies":["smart"]})"));
    const PersonaReplies persona = parts.persona(parts.three);
    QCOMPARE(persona.replies, few.isEmpty() ? QStringList{"smart"} : few);
    QCOMPARE(persona.samples, samples);
}

void TestAIService::withoutMessagesOnlyPersonaStaysSilent() {
    Parts parts;
    const PersonaReplies none = parts.persona({});
    QCOMPARE(none.samples, 0);
    QCOMPARE(parts.http.requests().size(), 0);
    parts.smart({});
    QCOMPARE(parts.http.requests().size(), 1);
    QCOMPARE(parts.sent().value(u"messages"), QJsonValue(QJsonArray()));
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"replies":["a"]})"));
    QCOMPARE(parts.analysis({})->chatContext, u"Последние сообщения: "_s);
}

void TestAIService::theDigestQuotesTheLastTen_data() {
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("quoted");
    QTest::newRow("nothing") << u""_s << u""_s;
    QTest::newRow("more") << QString(50, u'я') + u"ю"_s << QString(50, u'я');
    QTest::newRow("flags and skin") << u"🇩🇪👍🏽"_s.repeated(26)
                                    << u"🇩🇪👍🏽"_s.repeated(25);
    QTest::newRow("half a surrogate") << QString(QChar(0xd83d)) << QString(QChar(0xd83d));
    QTest::newRow("a million") << QString(1'000'000, u'x') << QString(50, u'x');
}

void TestAIService::theDigestQuotesTheLastTen() {
    QFETCH(QString, content);
    QFETCH(QString, quoted);
    Parts parts;
    parts.http.answerFor(smartPath, ScriptedAnswer::of(200, R"({"replies":["a"]})"));
    const QList<MessengerMessage> two{message(u"7"_s, content), message(u"9"_s, content)};
    QCOMPARE(parts.analysis(two)->chatContext, u"Последние сообщения: Я: %1 · Собеседник: %1"_s.arg(quoted));
    const auto before = conversation(20);
    QCOMPARE(parts.analysis(before + two)->chatContext.count(u" · "_s), 9);
}

void TestAIService::freeFormAnswers_data() {
    QTest::addColumn<ScriptedAnswer>("given");
    // Null where the answer is absent.
    QTest::addColumn<QString>("answer");
    const auto body = [](const char *bytes) { return ScriptedAnswer::of(200, bytes); };
    const QString absent;
    QTest::newRow("trimmed") << body(R"({"response":" \n two words\t\r\n"})") << "two words";
    QTest::newRow("white space") << body(R"({"response":" \n "})") << "";
    QTest::newRow("whatever the status") << ScriptedAnswer::of(503, R"({"response":"yes"})") << "yes";
    QTest::newRow("a number") << body(R"({"response":1})") << absent;
    QTest::newRow("a list") << body(R"(["response"])") << absent;
    QTest::newRow("no JSON") << body("response") << absent;
    QTest::newRow("cut short") << ScriptedAnswer::truncated(R"({"response":"yes"})") << absent;
    QTest::newRow("hung up") << ScriptedAnswer::closed() << absent;
    QTest::newRow("silence") << ScriptedAnswer::silence() << absent;
}

void TestAIService::freeFormAnswers() {
    QFETCH(ScriptedAnswer, given);
    QFETCH(QString, answer);
    Parts parts;
    MessengerAIService impatient(parts.api, parts.http.base(), given.bytes ? 60'000 : 100);
    parts.http.answerFor("/api/chat", given);
    const auto found = *outcomeOf(impatient.askAI(u"p"_s)).value;
    QCOMPARE(found.has_value(), !answer.isNull());
    QCOMPARE(found.value_or(QString()), answer);
}

void TestAIService::aPromptGoesOutWithoutTheToken() {
    Parts parts;
    QVERIFY(!*outcomeOf(parts.service.askAI(u"why \"this\"?\n"_s)).value);
    const RecordedRequest request = parts.http.lastRequest();
    QCOMPARE(request.method, "POST");
    QCOMPARE(request.target, "/api/chat");
    QCOMPARE(request.headers.value("content-type"), "application/json");
    QVERIFY(!request.headers.contains("authorization"));
    QCOMPARE(parts.sent(), (QJsonObject{{"message", u"why \"this\"?\n"_s}, {"temperature", 0.3}}));
    MessengerAIService nowhere(parts.api, u"no address"_s);
    QVERIFY(!*outcomeOf(nowhere.askAI(u"p"_s)).value);
}

void TestAIService::translationsKnowTwoLanguages() {
    Parts parts;
    for (const QString &to : {u"ru"_s, u"de"_s, u"RU"_s, QString()}) {
        parts.http.answerNext(ScriptedAnswer::of(200, R"({"response":"done "})"));
        QCOMPARE(*outcomeOf(parts.service.translateText(u" text"_s, to)).value, u"done"_s);
        QCOMPARE(json::text(parts.sent(), u"message"), u"Переведи на %1. ТОЛЬКО перевод:\n text"_s.arg(
                                                           to == "ru" ? u"русский"_s : u"английский"_s));
    }
}

void TestAIService::failuresAreLoggedWithoutAnyText() {
    const ChildResult result = runChild({});
    QCOMPARE(result.exitCode, 0);
    const QStringList lines = result.output.split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.at(0).startsWith(u"[Persona] API error: "_s));
    QVERIFY(lines.at(1).startsWith(u"[SmartReply] API error: "_s));
    QVERIFY(lines.at(1).contains(u"500"_s));
    QVERIFY(!result.output.contains(u"words"_s));
}

void TestAIService::nobodyHasToWaitForAnAnswer() {
    Parts parts;
    parts.http.answerNext(ScriptedAnswer::of(500).heldBack());
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"response":"late"})").heldBack());
    {
        const auto replies = parts.service.generatePersonaReplies(parts.three, u"c"_s, u"7"_s);
        const auto answer = parts.service.askAI(u"p"_s);
        QTRY_COMPARE(parts.http.requests().size(), 2);
    }
    parts.http.release();
    QTRY_COMPARE(parts.requestsTo(smartPath), 1);
}

void TestAIService::theHomeServerAnswers() {
    homeserver::test::Site site;
    homeserver::test::Person anna(site, u"anna"_s);
    const QString base = site.server().httpUrl().toString();
    const QString chat = anna.groupWith({});
    anna.say(chat, u"On my way, see you soon"_s);
    SignedInSession signedIn;
    signedIn.session.token = anna.token;
    MessengerAPI api(base, signedIn.session);
    MessengerAIService service(api, base);
    const QString myself = QString::number(anna.id);
    const QList<MessengerMessage> asked{message(myself, u"Hello"_s), message(u"9"_s, u"Is it ready?"_s)};
    const auto smart = *outcomeOf(service.generateSmartReplies(asked, myself)).value;
    QVERIFY(!smart.isEmpty() && smart.size() <= 3);
    const auto persona = *outcomeOf(service.generatePersonaReplies(asked, chat, myself)).value;
    QVERIFY(!persona.replies.isEmpty() && persona.replies.size() <= 3);
    const auto analysis = *outcomeOf(service.analyzeChat(asked, myself)).value;
    QVERIFY(analysis);
    QCOMPARE(analysis->chatContext, u"Последние сообщения: Я: Hello · Собеседник: Is it ready?"_s);
    // No translator is configured.
    QVERIFY(!*outcomeOf(service.translateText(u"Hello"_s, u"ru"_s)).value);
}

ORVANE_TEST_MAIN(TestAIService)
#include "tst_ai_service.moc"

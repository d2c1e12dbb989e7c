// SPDX-License-Identifier: MIT
#include "AI/MessengerAIService.h"
#include "HomeServer/Client.h"
#include "Support/Await.h"
#include "Support/ClientParts.h"
#include "Support/InRow.h"
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
        return *outcomeOf(service.generateSmartReplies(messages, "7")).value;
    }
    PersonaReplies persona(const QList<MessengerMessage> &messages) {
        return *outcomeOf(service.generatePersonaReplies(messages, "c", "7")).value;
    }
    std::optional<ChatAnalysis> analysis(const QList<MessengerMessage> &messages) {
        return *outcomeOf(service.analyzeChat(messages, "7")).value;
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
        parts.persona({message("9", "words of a person")});
        return 0;
    }

private Q_SLOTS:
    void rolesDifferByOperation() {
        const auto check = [](const char *operation, int length, int first, const QString &ownRole,
                              const QJsonValue &userID) {
            IN_ROW(QByteArray(operation) + ' ' + QByteArray::number(length));
            const bool isPersona = qstrcmp(operation, "persona") == 0;
            Parts parts;
            const auto messages = conversation(length);
            parts.http.answerNext(ScriptedAnswer::of(200, R"({"replies":["ok"]})"));
            if (isPersona)
                parts.persona(messages);
            else if (qstrcmp(operation, "smart") == 0)
                parts.smart(messages);
            else
                parts.analysis(messages);
            QCOMPARE(parts.http.requests().size(), 1);
            QCOMPARE(parts.http.lastRequest().target, isPersona ? personaPath : smartPath);
            QCOMPARE(parts.sent().value("user_id"_L1), userID);
            QCOMPARE(json::text(parts.sent(), u"chat_id").has_value(), isPersona);
            const QString othersRole = ownRole == "user" ? "assistant" : "user";
            QJsonArray items;
            for (int i = first; i < length; ++i)
                items.append(QJsonObject{{"role", i % 2 == 0 ? othersRole : ownRole},
                                         {"content", QString::number(i)}});
            QCOMPARE(parts.sent().value("messages"_L1).toArray(), items);
        };
        for (const int length : {3, 30}) {
            check("smart", length, std::max(0, length - 10), "assistant", 7);
            check("persona", length, std::max(0, length - 10), "assistant", QJsonValue::Undefined);
            check("analysis", length, std::max(0, length - 20), "user", 0);
        }
    }

    void repliesAreReadStrictly() {
        // `few` is empty where the persona has to fall back, `analysed` null where there is no analysis.
        const auto check = [](const char *name, const ScriptedAnswer &given, const QStringList &few = {},
                              qint64 samples = 0, const QString &analysed = {}) {
            IN_ROW(name);
            Parts parts;
            parts.http.answerFor(smartPath, given);
            QCOMPARE(parts.smart(parts.three), few);
            const auto analysis = parts.analysis(parts.three);
            QCOMPARE(analysis.has_value(), !analysed.isNull());
            if (analysis) {
                QCOMPARE(analysis->replies.join(','), analysed);
                QVERIFY(analysis->unansweredQuestions.isEmpty());
            }
            parts.http.answerFor(personaPath, given);
            parts.http.answerFor(smartPath, ScriptedAnswer::of(200, R"({"replies":["smart"]})"));
            const PersonaReplies persona = parts.persona(parts.three);
            QCOMPARE(persona.replies, few.isEmpty() ? QStringList{"smart"} : few);
            QCOMPARE(persona.samples, samples);
        };
        const auto body = [](const char *bytes) { return ScriptedAnswer::of(200, bytes); };
        check("five", body(R"({"replies":["a","b","c","d","e"],"persona_samples":12})"), {"a", "b", "c"}, 12,
              "a,b,c,d,e");
        check("samples as text", body(R"({"replies":["a"],"persona_samples":"12"})"), {"a"}, 0, "a");
        check("a fraction", body(R"({"replies":["a"],"persona_samples":1.5})"), {"a"}, 0, "a");
        check("samples alone", body(R"({"persona_samples":12})"));
        check("empty list", body(R"({"replies":[],"persona_samples":12})"), {}, 0, "");
        check("one is a number", body(R"({"replies":["a",1]})"));
        check("a text", body(R"({"replies":"abc"})"));
        check("no JSON", body("<html>"));
        check("refused", ScriptedAnswer::of(500, R"({"replies":["a"]})"));
        check("cut short", ScriptedAnswer::truncated(R"({"replies":["a"]})"));
        check("hung up", ScriptedAnswer::closed());
    }

    void withoutMessagesOnlyPersonaStaysSilent() {
        Parts parts;
        const PersonaReplies none = parts.persona({});
        QCOMPARE(none.samples, 0);
        QCOMPARE(parts.http.requests().size(), 0);
        parts.smart({});
        QCOMPARE(parts.http.requests().size(), 1);
        QCOMPARE(parts.sent().value(u"messages"), QJsonValue(QJsonArray()));
        parts.http.answerNext(ScriptedAnswer::of(200, R"({"replies":["a"]})"));
        QCOMPARE(parts.analysis({})->chatContext, "Последние сообщения: ");
    }

    void theDigestQuotesTheLastTen() {
        const auto check = [](const char *name, const QString &content, const QString &quoted) {
            IN_ROW(name);
            Parts parts;
            parts.http.answerFor(smartPath, ScriptedAnswer::of(200, R"({"replies":["a"]})"));
            const QList<MessengerMessage> two{message("7", content), message("9", content)};
            QCOMPARE(parts.analysis(two)->chatContext,
                     u"Последние сообщения: Я: %1 · Собеседник: %1"_s.arg(quoted));
            QCOMPARE(parts.analysis(conversation(20) + two)->chatContext.count(" · "), 9);
        };
        check("nothing", "", "");
        check("more", QString(50, u'я') + "ю", QString(50, u'я'));
        check("flags and skin", u"🇩🇪👍🏽"_s.repeated(26), u"🇩🇪👍🏽"_s.repeated(25));
        check("half a surrogate", QChar(0xd83d), QChar(0xd83d));
        check("a million", QString(1'000'000, u'x'), QString(50, u'x'));
    }

    void freeFormAnswers() {
        const auto check = [](const char *name, const ScriptedAnswer &given,
                              const std::optional<QString> &answer = {}) {
            IN_ROW(name);
            Parts parts;
            MessengerAIService impatient(parts.api, parts.http.base(), given.bytes ? 60'000 : 100);
            parts.http.answerFor("/api/chat", given);
            QCOMPARE(*outcomeOf(impatient.askAI("p")).value, answer);
        };
        const auto body = [](const char *bytes) { return ScriptedAnswer::of(200, bytes); };
        check("trimmed", body(R"({"response":" \n two words\t\r\n"})"), "two words");
        check("white space", body(R"({"response":" \n "})"), "");
        check("whatever the status", ScriptedAnswer::of(503, R"({"response":"yes"})"), "yes");
        check("a number", body(R"({"response":1})"));
        check("a list", body(R"(["response"])"));
        check("no JSON", body("response"));
        check("cut short", ScriptedAnswer::truncated(R"({"response":"yes"})"));
        check("hung up", ScriptedAnswer::closed());
        check("silence", ScriptedAnswer::silence());
    }

    void aPromptGoesOutWithoutTheToken() {
        Parts parts;
        QVERIFY(!*outcomeOf(parts.service.askAI(u"why \"this\"?\n"_s)).value);
        const RecordedRequest request = parts.http.lastRequest();
        QCOMPARE(request.method, "POST");
        QCOMPARE(request.target, "/api/chat");
        QCOMPARE(request.headers.value("content-type"), "application/json");
        QVERIFY(!request.headers.contains("authorization"));
        QCOMPARE(parts.sent(), (QJsonObject{{"message", u"why \"this\"?\n"_s}, {"temperature", 0.3}}));
        MessengerAIService nowhere(parts.api, "no address");
        QVERIFY(!*outcomeOf(nowhere.askAI("p")).value);
    }

    void translationsKnowTwoLanguages() {
        Parts parts;
        for (const QString to : {"ru", "de", "RU", ""}) {
            parts.http.answerNext(ScriptedAnswer::of(200, R"({"response":"done "})"));
            QCOMPARE(*outcomeOf(parts.service.translateText(" text", to)).value, "done");
            QCOMPARE(json::text(parts.sent(), u"message"),
                     u"Переведи на %1. ТОЛЬКО перевод:\n text"_s.arg(to == "ru" ? "русский" : "английский"));
        }
    }

    void failuresAreLoggedWithoutAnyText() {
        const ChildResult result = runChild({});
        QCOMPARE(result.exitCode, 0);
        const QStringList lines = result.output.split(u'\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.at(0).startsWith("[Persona] API error: "));
        QVERIFY(lines.at(1).startsWith("[SmartReply] API error: "));
        QVERIFY(lines.at(1).contains("500"));
        QVERIFY(!result.output.contains("words"));
    }

    void nobodyHasToWaitForAnAnswer() {
        Parts parts;
        parts.http.answerNext(ScriptedAnswer::of(500).heldBack());
        parts.http.answerNext(ScriptedAnswer::of(200, R"({"response":"late"})").heldBack());
        {
            const auto replies = parts.service.generatePersonaReplies(parts.three, "c", "7");
            const auto answer = parts.service.askAI("p");
            QTRY_COMPARE(parts.http.requests().size(), 2);
        }
        parts.http.release();
        QTRY_COMPARE(parts.requestsTo(smartPath), 1);
    }

    void theHomeServerAnswers() {
        homeserver::test::Site site;
        homeserver::test::Person anna(site, "anna");
        const QString base = site.server().httpUrl().toString();
        const QString chat = anna.groupWith({});
        anna.say(chat, "On my way, see you soon");
        SignedInSession signedIn;
        signedIn.session.token = anna.token;
        MessengerAPI api(base, signedIn.session);
        MessengerAIService service(api, base);
        const QString myself = QString::number(anna.id);
        const QList<MessengerMessage> asked{message(myself, "Hello"), message("9", "Is it ready?")};
        const qsizetype smart = outcomeOf(service.generateSmartReplies(asked, myself)).value->size();
        QVERIFY(smart > 0 && smart <= 3);
        const auto persona =
            outcomeOf(service.generatePersonaReplies(asked, chat, myself)).value->replies.size();
        QVERIFY(persona > 0 && persona <= 3);
        QVERIFY(outcomeOf(service.analyzeChat(asked, myself)).value->has_value());
        // No translator is configured.
        QVERIFY(!*outcomeOf(service.translateText("Hello", "ru")).value);
    }
};

ORVANE_TEST_MAIN(TestAIService)
#include "tst_ai_service.moc"

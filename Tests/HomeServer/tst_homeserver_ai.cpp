// SPDX-License-Identifier: MIT
#include "Client.h"
#include "HomeServer/Ai/TextRules.h"

#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

// A web server that gives one answer to whatever comes; an empty one means that it hangs up.
class OneAnswer : public QTcpServer {
public:
    explicit OneAnswer(const QByteArray &answer) {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, answer] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket, answer] {
                received += socket->readAll();
                socket->write(answer);
                socket->disconnectFromHost();
            });
        });
    }

    QString url() const { return u"http://127.0.0.1:%1"_s.arg(serverPort()); }

    QByteArray received;
};

QByteArray http(const QByteArray &body, const QByteArray &status = "200 OK") {
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

QByteArray modelSays(const QString &text) {
    const QJsonObject message{{"role"_L1, "assistant"_L1}, {"content"_L1, text}};
    const QJsonObject answer{{"choices"_L1, QJsonArray{QJsonObject{{"message"_L1, message}}}}};
    return http(QJsonDocument(answer).toJson(QJsonDocument::Compact));
}

} // namespace

class AiTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shortRepliesFitTheText_data();
    void shortRepliesFitTheText();
    void summaryIsTakenFromTheText();
    void hostileTextsAreSummarized_data();
    void hostileTextsAreSummarized();
    void entitiesAreNamesAndNumbers();
    void periodsLimitTheSummary();
    void personaSpeaksInOwnPhrases();
    void agentPassesCommandsOn_data();
    void agentPassesCommandsOn();
    void memoryTellsItsSources();
    void threadsCrossChats();
    void badConversations_data();
    void badConversations();
    void modelIsAskedWhereThereIsOne();
    void failingModelFallsBack_data();
    void failingModelFallsBack();
    void pingTriesThePeer();
    void badPeers_data();
    void badPeers();
};

void AiTest::shortRepliesFitTheText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reply");
    QTest::newRow("question") << u"Is it ready?"_s << u"Yes"_s;
    QTest::newRow("Russian question") << u"Готово?"_s << u"Да"_s;
    QTest::newRow("request") << u"Could you send the file?"_s << u"Sure, will do"_s;
    QTest::newRow("Russian request") << u"Пришли, пожалуйста, файл"_s << u"Хорошо, сделаю"_s;
    QTest::newRow("thanks") << u"thanks a lot"_s << u"You're welcome!"_s;
    QTest::newRow("greeting") << u"Привет!"_s << u"Привет!"_s;
    QTest::newRow("no greeting inside a word") << u"The ship sails"_s << u"OK"_s;
    QTest::newRow("statement") << u"Я приду завтра"_s << u"Хорошо"_s;
    QTest::newRow("nothing") << u"  \n"_s << QString();
}

void AiTest::shortRepliesFitTheText() {
    QFETCH(QString, text);
    QFETCH(QString, reply);
    QCOMPARE(shortReplies(text).value(0), reply);
    QVERIFY(shortReplies(text).size() <= 3);
}

void AiTest::summaryIsTakenFromTheText() {
    const Summary summary =
        summarize({{u"Anna"_s, u"The release of the client is planned for Friday. Nice weather."_s},
                   {u"Bert"_s, u"The release needs tests of the client."_s},
                   {u"Anna"_s, u"We decided to ship the release on Friday."_s},
                   {u"Bert"_s, u"Please check the tests of the release before Friday."_s},
                   {u"Carl"_s, u"ok"_s}});
    QVERIFY(summary.text.contains(u"release"_s));
    QVERIFY(!summary.text.contains(u"weather"_s));
    QCOMPARE(summary.decisions, QStringList{u"Anna: We decided to ship the release on Friday."_s});
    QCOMPARE(summary.tasks, QStringList{u"Bert: Please check the tests of the release before Friday."_s});
}

void AiTest::hostileTextsAreSummarized_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("one huge word") << QString(500'000, u'x');
    QTest::newRow("only dots") << QString(500'000, u'.');
    QTest::newRow("many sentences") << u"Go now. "_s.repeated(50'000);
    QTest::newRow("line breaks") << QString(100'000, u'\n');
    QTest::newRow("half a surrogate") << QString(QChar(0xd800)) + u" and more words here."_s;
}

void AiTest::hostileTextsAreSummarized() {
    QFETCH(QString, text);
    const Summary summary = summarize({{u"A"_s, text}});
    QVERIFY(summary.text.size() < 2000);
    QVERIFY(entitiesIn(text).size() < 20);
}

void AiTest::entitiesAreNamesAndNumbers() {
    QStringList found;
    for (const Entity &entity :
         entitiesIn(u"Yesterday we met with Ivan Petrov and paid $1,200 for 30% of it"_s))
        found.append(entity.type + u'=' + entity.name);
    QVERIFY2(found.contains(u"name=Ivan Petrov"_s), qPrintable(found.join(u'|')));
    QVERIFY2(found.contains(u"number=$1,200"_s), qPrintable(found.join(u'|')));
    QVERIFY2(!found.join(u'|').contains(u"Yesterday"_s), qPrintable(found.join(u'|')));
}

void AiTest::periodsLimitTheSummary() {
    Site site;
    Person anna(site, u"anna"_s);
    anna.say(lobby(), u"We decided to paint the fence green."_s);
    site.now += 8 * 24 * 3600;
    anna.say(lobby(), u"We decided to sell the house quickly."_s);
    const auto decisions = [&](const QString &period) {
        return anna.post(u"/api/chat/summarize"_s, {{"chat_id"_L1, lobby()}, {"period"_L1, period}})
            .json["decisions"_L1]
            .toArray()
            .size();
    };
    QCOMPARE(decisions(u"day"_s), 1);
    QCOMPARE(decisions(u"week"_s), 1);
    QCOMPARE(decisions(u"all"_s), 2);
}

void AiTest::personaSpeaksInOwnPhrases() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    for (const auto *text : {u"Договорились!", u"Ок, бегу", u"Договорились!"})
        anna.say(lobby(), QString::fromUtf16(text));
    bert.say(lobby(), u"Nope"_s);
    const QJsonObject answer =
        anna.post(u"/api/chat/persona-reply"_s, {{"chat_id"_L1, lobby()}, {"messages"_L1, QJsonArray()}})
            .json;
    QCOMPARE(answer["replies"_L1].toArray(), (QJsonArray{u"Договорились!"_s, u"Ок, бегу"_s}));
    QCOMPARE(answer["persona_samples"_L1], QJsonValue(3));
}

void AiTest::agentPassesCommandsOn_data() {
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("param");
    QTest::newRow("search") << u"/search budget 2024"_s << u"search"_s << u"budget 2024"_s;
    QTest::newRow("search in words") << u"Найди договор"_s << u"search"_s << u"договор"_s;
    QTest::newRow("translate") << u"/translate good morning"_s << u"translate"_s << u"good morning"_s;
    QTest::newRow("summary") << u"summarize this"_s << u"summarize"_s << u"all"_s;
    QTest::newRow("search for nothing") << u"/search "_s << QString() << QString();
    QTest::newRow("talk") << u"hello"_s << QString() << QString();
}

void AiTest::agentPassesCommandsOn() {
    QFETCH(QString, message);
    QFETCH(QString, type);
    QFETCH(QString, param);
    Site site;
    Person anna(site, u"anna"_s);
    const QJsonObject answer =
        anna.post(u"/api/chat/agent"_s, {{"message"_L1, message}, {"chat_id"_L1, lobby()}}).json;
    QVERIFY(!answer["reply"_L1].toString().isEmpty());
    QCOMPARE(answer["action"_L1]["type"_L1].toString(), type);
    const QJsonObject params = answer["action"_L1]["params"_L1].toObject();
    QCOMPARE(params.isEmpty(), param.isEmpty());
    QVERIFY(param.isEmpty() || params.toVariantMap().values().contains(param));
}

void AiTest::memoryTellsItsSources() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString direct = anna.directChatWith(bert);
    bert.say(direct, u"The budget for the third quarter is 40000"_s);
    site.now += 24 * 3600;
    anna.say(lobby(), u"The quarter begins in July"_s);
    const QJsonObject answer = anna.post(u"/api/chat/memory"_s, {{"query"_L1, "budget quarter"_L1}}).json;
    QCOMPARE(answer["method"_L1], QJsonValue("full-text"_L1));
    QCOMPARE(answer["sources"_L1].toArray().size(), 2);
    QCOMPARE(answer["sources"_L1][0]["chat_id"_L1], QJsonValue(direct));
    QCOMPARE(answer["sources"_L1][0]["chat_title"_L1], QJsonValue("bert"_L1));
    QVERIFY(answer["answer"_L1].toString().contains(u"budget"_s));
    QVERIFY(answer["timeline"_L1][0].toString().startsWith(u"2023-11-14"_s));
    const QJsonObject nothing = anna.post(u"/api/chat/memory"_s, {{"query"_L1, "unicorn"_L1}}).json;
    QCOMPARE(nothing["answer"_L1], QJsonValue("Nothing was found."_L1));
    QVERIFY(nothing["sources"_L1].toArray().isEmpty());
}

void AiTest::threadsCrossChats() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    anna.say(lobby(), u"The venue is booked"_s);
    bert.say(anna.directChatWith(bert), u"Is the venue large enough for the party"_s);
    const QJsonObject thread =
        anna.post(u"/api/chat/threads/discover"_s, {{"query"_L1, "venue party"_L1}}).json;
    QCOMPARE(thread["related_chats"_L1].toArray().size(), 2);
    QCOMPARE(thread["messages"_L1][0]["score"_L1], QJsonValue(1));
    QCOMPARE(thread["messages"_L1][1]["score"_L1], QJsonValue(0.5));
}

void AiTest::badConversations_data() {
    QTest::addColumn<QByteArray>("messages");
    for (const char *messages : {"7", "{}", "[7]", R"([{"role":"user","content":7}])", R"([{"content":"x"}])",
                                 R"([{"role":"system","content":"x"}])", "null"})
        QTest::newRow(messages) << QByteArray(messages);
    QTest::newRow("very many") << QByteArray("[" +
                                             QByteArray(R"({"role":"user","content":"x"},)").repeated(200) +
                                             R"({"role":"user","content":"x"}])");
}

void AiTest::badConversations() {
    QFETCH(QByteArray, messages);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.send("POST", u"/api/chat/smart-reply"_s, R"({"messages":)" + messages + "}").status, 400);
}

void AiTest::modelIsAskedWhereThereIsOne() {
    OneAnswer model(modelSays(u"1. Да\n- Нет\n\n* Потом"_s));
    Site site([&](Options &options) { options.aiUrl = model.url() + u"/v1/"_s; });
    Person anna(site, u"anna"_s);
    const QString id = anna.say(lobby(), u"guten Tag"_s);
    // To nothing there is no reply, and no need to think about it.
    const Reply toNothing = anna.post(u"/api/chat/smart-reply"_s, {{"messages"_L1, QJsonArray()}});
    QCOMPARE(toNothing.status, 200);
    QVERIFY(toNothing.json.isEmpty());
    QVERIFY(model.received.isEmpty());
    const QJsonArray conversation{QJsonObject{{"role"_L1, "user"_L1}, {"content"_L1, u"Придёшь?"_s}}};
    const QJsonObject replies = anna.post(u"/api/chat/smart-reply"_s, {{"messages"_L1, conversation}}).json;
    QCOMPARE(replies["replies"_L1].toArray(), (QJsonArray{u"Да"_s, u"Нет"_s, u"Потом"_s}));
    QCOMPARE(replies["method"_L1], QJsonValue("model"_L1));
    QVERIFY(model.received.startsWith("POST /v1/chat/completions"));
    QVERIFY(model.received.contains("Придёшь?"));
    QVERIFY(!model.received.contains(anna.token.toUtf8()));
    QVERIFY(anna.post(u"messages/%1/translate"_s.arg(id), {{"target_lang"_L1, "ru"_L1}})
                .json["translated"_L1]
                .isString());
    QVERIFY(site.send("POST", u"/api/chat"_s, R"({"message":"hi","temperature":0.3})")
                .json["response"_L1]
                .isString());
}

void AiTest::failingModelFallsBack_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("hangs up") << QByteArray();
    QTest::newRow("no JSON") << http("<html>");
    QTest::newRow("another shape") << http(R"({"choices":[]})");
    QTest::newRow("a number") << http(R"({"choices":[{"message":{"content":5}}]})");
    QTest::newRow("an error") << http(R"({"choices":[{"message":{"content":"x"}}]})", "500 Oops");
}

void AiTest::failingModelFallsBack() {
    QFETCH(QByteArray, answer);
    OneAnswer model(answer);
    Site site([&](Options &options) { options.aiUrl = model.url(); });
    Person anna(site, u"anna"_s);
    const QJsonArray conversation{QJsonObject{{"role"_L1, "user"_L1}, {"content"_L1, "Ready?"_L1}}};
    const QJsonObject replies = anna.post(u"/api/chat/smart-reply"_s, {{"messages"_L1, conversation}}).json;
    QCOMPARE(replies["method"_L1], QJsonValue("rules"_L1));
    QCOMPARE(replies["replies"_L1][0], QJsonValue("Yes"_L1));
    QCOMPARE(site.send("POST", u"/api/chat"_s, R"({"message":"hi"})").status, 503);
}

void AiTest::pingTriesThePeer() {
    auto peer = std::make_unique<OneAnswer>(http("{}", "404 Not Found")); // whatever it says, it is there
    Site site;
    Person anna(site, u"anna"_s);
    anna.post(u"federation/peers"_s, {{"domain"_L1, "Near.Example"_L1}, {"base_url"_L1, peer->url()}});
    const auto status = [&] {
        return anna.get(u"federation/peers"_s).json["peers"_L1][0]["status"_L1].toString();
    };
    QCOMPARE(status(), u"unknown"_s);
    QCOMPARE(anna.post(u"federation/peers/near.example/ping"_s).json["status"_L1], QJsonValue("online"_L1));
    QCOMPARE(status(), u"online"_s);
    peer.reset();
    QCOMPARE(anna.post(u"federation/peers/near.example/ping"_s).json["status"_L1], QJsonValue("offline"_L1));
    QCOMPARE(status(), u"offline"_s);
    QCOMPARE(anna.post(u"federation/peers/unknown.example/ping"_s).status, 404);
    for (const auto *name : {u"near.example", u"@anna:near.example"})
        QVERIFY(anna.post(u"federation/peers/discover"_s, {{"domain"_L1, QString::fromUtf16(name)}})
                    .json.contains("base_url"_L1));
    QVERIFY(!anna.post(u"federation/peers/discover"_s, {{"domain"_L1, "far.example"_L1}})
                 .json.contains("base_url"_L1));
}

void AiTest::badPeers_data() {
    QTest::addColumn<QString>("domain");
    QTest::addColumn<QString>("url");
    QTest::newRow("no domain") << QString() << u"https://a.example"_s;
    QTest::newRow("blank inside") << u"a b"_s << u"https://a.example"_s;
    QTest::newRow("path") << u"a.example/../x"_s << u"https://a.example"_s;
    QTest::newRow("id without domain") << u"@x"_s << u"https://a.example"_s;
    QTest::newRow("file") << u"a.example"_s << u"file:///etc/passwd"_s;
    QTest::newRow("no host") << u"a.example"_s << u"https:///x"_s;
    QTest::newRow("no address") << u"a.example"_s << u"a.example"_s;
}

void AiTest::badPeers() {
    QFETCH(QString, domain);
    QFETCH(QString, url);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.post(u"federation/peers"_s, {{"domain"_L1, domain}, {"base_url"_L1, url}}).status, 400);
}

QTEST_GUILESS_MAIN(AiTest)
#include "tst_homeserver_ai.moc"

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
    void shortRepliesFitTheText() {
        for (const auto &[text, reply] : {std::pair(u"Is it ready?"_s, u"Yes"_s),
                                          {u"Готово?"_s, u"Да"_s},
                                          {u"Could you send the file?"_s, u"Sure, will do"_s},
                                          {u"Пришли, пожалуйста, файл"_s, u"Хорошо, сделаю"_s},
                                          {u"thanks a lot"_s, u"You're welcome!"_s},
                                          {u"Привет!"_s, u"Привет!"_s},
                                          {u"The ship sails"_s, u"OK"_s}, // no greeting inside a word
                                          {u"Я приду завтра"_s, u"Хорошо"_s},
                                          {u"  \n"_s, QString()}}) {
            QCOMPARE(shortReplies(text).value(0), reply);
            QVERIFY(shortReplies(text).size() <= 3);
        }
    }

    void summaryIsTakenFromTheText() {
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

        QStringList found;
        for (const Entity &entity :
             entitiesIn(u"Yesterday we met with Ivan Petrov and paid $1,200 for 30% of it"_s))
            found.append(entity.type + u'=' + entity.name);
        QVERIFY2(found.contains(u"name=Ivan Petrov"_s) && found.contains(u"number=$1,200"_s) &&
                     !found.join(u'|').contains(u"Yesterday"_s),
                 qPrintable(found.join(u'|')));
    }

    void hostileTextsAreSummarized() {
        for (const QString &text :
             {QString(), QString(500'000, u'x'), QString(500'000, u'.'), u"Go now. "_s.repeated(50'000),
              QString(100'000, u'\n'), QChar(0xd800) + u" and more words here."_s}) {
            QVERIFY(summarize({{u"A"_s, text}}).text.size() < 2000);
            QVERIFY(entitiesIn(text).size() < 20);
        }
    }

    void periodsLimitTheSummary() {
        Company c;
        c.anna.say(lobby(), u"We decided to paint the fence green."_s);
        c.site.now += 8 * 24 * 3600;
        c.anna.say(lobby(), u"We decided to sell the house quickly."_s);
        for (const auto &[period, decisions] : {std::pair(u"day"_s, 1), {u"week"_s, 1}, {u"all"_s, 2}})
            QCOMPARE(c.anna.post(u"/api/chat/summarize"_s, {{"chat_id"_L1, lobby()}, {"period"_L1, period}})
                         .count("decisions"),
                     decisions);
    }

    void personaSpeaksInOwnPhrases() {
        Company c;
        for (const auto *text : {u"Договорились!", u"Ок, бегу", u"Договорились!"})
            c.anna.say(lobby(), QString::fromUtf16(text));
        c.bert.say(lobby(), u"Nope"_s);
        const Reply answer = c.anna.post(u"/api/chat/persona-reply"_s,
                                         {{"chat_id"_L1, lobby()}, {"messages"_L1, QJsonArray()}});
        QCOMPARE(answer.at("replies").toArray(), (QJsonArray{u"Договорились!"_s, u"Ок, бегу"_s}));
        QCOMPARE(answer.at("persona_samples"), QJsonValue(3));
    }

    void agentPassesCommandsOn() {
        Company c;
        for (const auto &[message, type, param] :
             {std::tuple(u"/search budget 2024"_s, u"search"_s, u"budget 2024"_s),
              {u"Найди договор"_s, u"search"_s, u"договор"_s},
              {u"/translate good morning"_s, u"translate"_s, u"good morning"_s},
              {u"summarize this"_s, u"summarize"_s, u"all"_s},
              {u"/search "_s, QString(), QString()},
              {u"hello"_s, QString(), QString()}}) {
            const Reply answer =
                c.anna.post(u"/api/chat/agent"_s, {{"message"_L1, message}, {"chat_id"_L1, lobby()}});
            QVERIFY(!answer.text("reply").isEmpty());
            QCOMPARE(answer.text("action.type"), type);
            const QVariantMap params = answer.at("action.params").toObject().toVariantMap();
            QCOMPARE(params.isEmpty(), param.isEmpty());
            QVERIFY(param.isEmpty() || params.values().contains(param));
        }
    }

    void memoryTellsItsSources() {
        Company c;
        const QString direct = c.anna.directChatWith(c.bert);
        c.bert.say(direct, u"The budget for the third quarter is 40000"_s);
        c.site.now += 24 * 3600;
        c.anna.say(lobby(), u"The quarter begins in July"_s);
        const Reply answer = c.anna.post(u"/api/chat/memory"_s, {{"query"_L1, "budget quarter"_L1}});
        QCOMPARE(answer.text("method"), u"full-text"_s);
        QCOMPARE(answer.count("sources"), 2);
        QCOMPARE(answer.text("sources.0.chat_id"), direct);
        QCOMPARE(answer.text("sources.0.chat_title"), u"bert"_s);
        QVERIFY(answer.text("answer").contains(u"budget"_s));
        QVERIFY(answer.text("timeline.0").startsWith(u"2023-11-14"_s));
        const Reply nothing = c.anna.post(u"/api/chat/memory"_s, {{"query"_L1, "unicorn"_L1}});
        QCOMPARE(nothing.text("answer"), u"Nothing was found."_s);
        QCOMPARE(nothing.count("sources"), 0);

        const Reply thread =
            c.anna.post(u"/api/chat/threads/discover"_s, {{"query"_L1, "budget quarter"_L1}});
        QCOMPARE(thread.count("related_chats"), 2);
        QCOMPARE(thread.at("messages.0.score"), QJsonValue(1));
        QCOMPARE(thread.at("messages.1.score"), QJsonValue(0.5));
    }

    void modelIsAskedWhereThereIsOne() {
        OneAnswer model(modelSays(u"1. Да\n- Нет\n\n* Потом"_s));
        Company c([&](Options &options) { options.aiUrl = model.url() + u"/v1/"_s; });
        const QString id = c.anna.say(lobby(), u"guten Tag"_s);
        // To nothing there is no reply, and no need to think about it.
        const Reply toNothing = c.anna.post(u"/api/chat/smart-reply"_s, {{"messages"_L1, QJsonArray()}});
        QCOMPARE(toNothing.status, 200);
        QVERIFY(toNothing.json.isEmpty());
        QVERIFY(model.received.isEmpty());
        const Reply replies = c.anna.post(u"/api/chat/smart-reply"_s, conversation(u"Придёшь?"_s));
        QCOMPARE(replies.at("replies").toArray(), (QJsonArray{u"Да"_s, u"Нет"_s, u"Потом"_s}));
        QCOMPARE(replies.text("method"), u"model"_s);
        QVERIFY(model.received.startsWith("POST /v1/chat/completions"));
        QVERIFY(model.received.contains("Придёшь?"));
        QVERIFY(!model.received.contains(c.anna.token.toUtf8()));
        QVERIFY(c.anna.post(u"messages/%1/translate"_s.arg(id), {{"target_lang"_L1, "ru"_L1}})
                    .at("translated")
                    .isString());
        QVERIFY(c.site.send("POST", u"/api/chat"_s, R"({"message":"hi","temperature":0.3})")
                    .at("response")
                    .isString());
    }

    void failingModelFallsBack() {
        for (const QByteArray &answer : {QByteArray(), http("<html>"), http(R"({"choices":[]})"),
                                         http(R"({"choices":[{"message":{"content":5}}]})"),
                                         http(R"({"choices":[{"message":{"content":"x"}}]})", "500 Oops")}) {
            OneAnswer model(answer);
            Site site([&](Options &options) { options.aiUrl = model.url(); });
            Person anna(site, u"anna"_s);
            const Reply replies = anna.post(u"/api/chat/smart-reply"_s, conversation(u"Ready?"_s));
            QCOMPARE(replies.text("method"), u"rules"_s);
            QCOMPARE(replies.text("replies.0"), u"Yes"_s);
            QCOMPARE(site.send("POST", u"/api/chat"_s, R"({"message":"hi"})").status, 503);
        }
    }

    void pingTriesThePeer() {
        auto peer = std::make_unique<OneAnswer>(http("{}", "404 Not Found")); // whatever it says, it is there
        Site site([](Options &options) { options.allowLocalPeers = true; });
        Person anna(site, u"anna"_s);
        anna.post(u"federation/peers"_s, {{"domain"_L1, "Near.Example"_L1}, {"base_url"_L1, peer->url()}});
        const auto status = [&] { return anna.get(u"federation/peers"_s).text("peers.0.status"); };
        const auto ping = [&] { return anna.post(u"federation/peers/near.example/ping"_s).text("status"); };
        QCOMPARE(status(), u"unknown"_s);
        QCOMPARE(ping(), u"online"_s);
        QCOMPARE(status(), u"online"_s);
        peer.reset();
        QCOMPARE(ping(), u"offline"_s);
        QCOMPARE(status(), u"offline"_s);
        for (const auto &[name, known] :
             {std::pair(u"near.example"_s, true), {u"@anna:near.example"_s, true}, {u"far.example"_s, false}})
            QCOMPARE(
                anna.post(u"federation/peers/discover"_s, {{"domain"_L1, name}}).json.contains("base_url"_L1),
                known);
    }

private:
    static QJsonObject conversation(const QString &text) {
        return {{"messages"_L1, QJsonArray{QJsonObject{{"role"_L1, "user"_L1}, {"content"_L1, text}}}}};
    }
};

QTEST_GUILESS_MAIN(AiTest)
#include "tst_homeserver_ai.moc"

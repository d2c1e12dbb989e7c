// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QJsonDocument>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class ActionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void editsReachOthers() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        const QString id = c.anna.say(c.chat, u"helo"_s);
        c.site.now += 5;
        const QString path = u"messages/"_s + id;
        QCOMPARE(c.anna.send("PATCH", path, R"({"content":"hello"})").text("message.content"), u"hello"_s);
        const QJsonObject event = berts.next(u"messenger_message_edited"_s);
        QCOMPARE(event["chat_id"_L1], QJsonValue(c.chat));
        QCOMPARE(event["message"_L1]["id"_L1], QJsonValue(id));
        QCOMPARE(event["message"_L1]["content"_L1], QJsonValue("hello"_L1));
        QVERIFY(!annas.has(u"messenger_message_edited"_s));
        QCOMPARE(c.bert.messages(c.chat)[0]["edited_at"_L1].toDouble(), c.site.now);
        // Only the author changes a message.
        QCOMPARE(c.bert.send("PATCH", path, R"({"content":"x"})").status, 403);
        QCOMPARE(c.bert.send("DELETE", path).status, 403);
        QCOMPARE(c.anna.messages(c.chat)[0]["content"_L1], QJsonValue("hello"_L1));
    }

    void deletionsReachOthers() {
        Company c;
        Listener berts(c.site, c.bert);
        const QString id = c.anna.say(c.chat, u"oops"_s);
        c.bert.post(u"messages/%1/star"_s.arg(id));
        c.bert.post(u"messages/%1/reactions"_s.arg(id), {{"emoji"_L1, "👍"_L1}});
        QCOMPARE(c.anna.send("DELETE", u"messages/"_s + id).status, 200);
        QCOMPARE(berts.next(u"messenger_message_deleted"_s)["message_id"_L1], QJsonValue(id));
        QVERIFY(c.bert.messages(c.chat).isEmpty());
        QCOMPARE(c.bert.get(u"starred"_s).count("messages"), 0);
        QCOMPARE(c.bert.get(u"search/global?q=oops"_s).count("messages"), 0);
        QCOMPARE(c.anna.send("DELETE", u"messages/"_s + id).status, 404);
        QVERIFY(c.bert.chat(c.chat)["last_message"_L1].isNull());
    }

    void reactionsToggle() {
        Company c;
        Listener annas(c.site, c.anna);
        const QString path = u"messages/%1/reactions"_s.arg(c.anna.say(c.chat, u"hi"_s));
        const QJsonObject thumb{{"emoji"_L1, u"👍"_s}};
        c.anna.post(path, thumb);
        const QJsonArray both = c.bert.post(path, thumb).at("reactions").toArray();
        QCOMPARE(both.size(), 2);
        QCOMPARE(both[1]["user_id"_L1], QJsonValue(QString::number(c.bert.id)));
        QCOMPARE(annas.next(u"messenger_reaction"_s)["reactions"_L1].toArray(), both);
        c.bert.post(path, {{"emoji"_L1, u"🔥"_s}});
        QCOMPARE(c.bert.post(path, thumb).count("reactions"), 2);
        QCOMPARE(c.anna.messages(c.chat)[0]["reactions"_L1].toArray().size(), 2);
    }

    void starsAreOnesOwn() {
        Company c;
        const QString id = c.anna.say(c.chat, u"hi"_s);
        const QString path = u"messages/%1/star"_s.arg(id);
        for (int i = 0; i < 2; ++i)
            QCOMPARE(c.bert.post(path).text("status"), u"starred"_s);
        QCOMPARE(c.bert.get(u"starred"_s).text("messages.0.id"), id);
        QCOMPARE(c.anna.get(u"starred"_s).count("messages"), 0);
        QCOMPARE(c.bert.send("DELETE", path).text("status"), u"unstarred"_s);
        QCOMPARE(c.bert.get(u"starred"_s).count("messages"), 0);
    }

    void mentionsAreForMembers() {
        Company c;
        const QString alone = c.anna.groupWith({});
        qsizetype before = 0;
        for (const auto &[text, mentions] : {std::pair(u"@bert look"_s, 1),
                                             {u"look, @BERT"_s, 1},
                                             {u"(ask @bert!)"_s, 1},
                                             {u"@bert @bert"_s, 1},
                                             {u"@berta"_s, 0},
                                             {u"bert"_s, 0},
                                             {QString(5000, u'@'), 0}}) {
            c.anna.say(c.chat, text);
            // A name in a chat its bearer is not in says nothing to them.
            c.anna.say(alone, text);
            const qsizetype now = c.bert.get(u"mentions"_s).count("mentions");
            QVERIFY2(now - before == mentions, qPrintable(text));
            before = now;
        }
    }

    void searchFindsWords() {
        Company c;
        const QString id = c.anna.say(c.chat, u"the draft"_s);
        c.anna.send("PATCH", u"messages/"_s + id, R"({"content":"the budget of the third quarter"})");
        c.anna.say(c.chat, u"Завтра совещание"_s);
        for (const auto &[query, hits] : {std::pair(u"budget"_s, 1),
                                          {u"BUDG"_s, 1},
                                          {u"third budget"_s, 1},
                                          {u"budget unicorn"_s, 0},
                                          {u"СОВЕЩАН"_s, 1},
                                          {u"draft"_s, 0}, // edited away
                                          {u"budget\" OR \"NEAR("_s, 0},
                                          {u"\"*^:-()"_s, 0},
                                          {u"content : budget"_s, 0}}) {
            const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(query));
            const Reply reply = c.bert.get(u"search/global?q="_s + encoded);
            QVERIFY2(reply.status == 200 && reply.count("messages") == hits, qPrintable(query));
        }
    }

    void searchKeepsOut() {
        Company c;
        c.anna.say(c.chat, u"secret plan"_s);
        c.anna.say(lobby(), u"public plan"_s);
        const Reply found = c.carl.get(u"search/global?q=plan"_s);
        QCOMPARE(found.count("messages"), 1);
        QCOMPARE(found.text("messages.0.chat_id"), lobby());
        QCOMPARE(c.carl.post(u"search/semantic"_s, {{"query"_L1, "plan"_L1}}).count("results"), 1);
        QCOMPARE(c.carl.post(u"/api/chat/memory"_s, {{"query"_L1, "plan"_L1}}).count("sources"), 1);
        QCOMPARE(c.carl.post(u"/api/chat/threads/discover"_s, {{"query"_L1, "plan"_L1}}).count("messages"),
                 1);
    }

    void foldersAreOnesOwn() {
        Company c;
        const QString folder = c.anna.post(u"folders"_s, {{"name"_L1, "Work"_L1}}).text("folder.id");
        const auto change = [&](const QString &action) {
            return c.anna.post(u"folders/%1/chats"_s.arg(folder),
                               {{"chat_id"_L1, c.chat}, {"action"_L1, action}});
        };
        QCOMPARE(change(u"add"_s).status, 200);
        QCOMPARE(change(u"add"_s).status, 200);
        QCOMPARE(c.anna.get(u"folders"_s).at("folders.0.chat_ids").toArray(), QJsonArray{c.chat});
        QCOMPARE(c.bert.get(u"folders"_s).count("folders"), 0);
        QCOMPARE(change(u"remove"_s).status, 200);
        QCOMPARE(c.anna.get(u"folders"_s).count("folders.0.chat_ids"), 0);
    }

    void channelsHaveOneVoice() {
        Company c;
        Listener berts(c.site, c.bert);
        const QString channel = c.anna.post(u"channels"_s, {{"title"_L1, "News"_L1}}).text("channel.id");
        const QString code =
            c.anna.post(u"chats/%1/invite"_s.arg(channel), {{"expires_hours"_L1, 1}}).text("code");
        QCOMPARE(c.bert.post(u"invites/"_s + code).status, 200);
        QCOMPARE(c.bert.get(u"channels"_s).text("channels.0.title"), u"News"_s);
        QCOMPARE(c.bert.post(u"chats/%1/messages"_s.arg(channel), {{"content"_L1, "x"_L1}}).status, 403);
        c.anna.say(channel, u"first"_s);
        QCOMPARE(berts.next(u"messenger_message"_s)["chat_id"_L1], QJsonValue(channel));
    }

    void invitesLetIn() {
        Company c;
        const auto invite = [&] {
            return c.bert.post(u"chats/%1/invite"_s.arg(c.chat), {{"expires_hours"_L1, 168}});
        };
        const QString code = invite().text("code");
        QVERIFY(invite().text("url").contains(u"/invites/"_s));
        QVERIFY(invite().text("code") != code);
        c.anna.say(c.chat, u"before"_s);
        QCOMPARE(c.carl.post(u"invites/"_s + code).text("chat.id"), c.chat);
        QCOMPARE(c.carl.chat(c.chat)["unread_count"_L1], QJsonValue(0));
        c.site.now += 169 * 3600;
        QCOMPARE(c.carl.post(u"invites/"_s + code).status, 404);
    }

    void pollVotesAreCounted() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        const QJsonObject poll{
            {"id"_L1, "P"_L1},
            {"isMultipleChoice"_L1, false},
            {"options"_L1, QJsonArray{QJsonObject{{"id"_L1, "a"_L1}}, QJsonObject{{"id"_L1, "b"_L1}}}}};
        // What only looks like a poll does not get in the way.
        for (const QByteArray &content : {QJsonDocument(poll).toJson(), QByteArray("no JSON")})
            c.anna.post(u"chats/%1/messages"_s.arg(c.chat),
                        {{"type"_L1, "poll"_L1}, {"content"_L1, QString::fromUtf8(content)}});
        const auto vote = [&](Listener &listener, const QString &option) {
            listener.send({{"type"_L1, "poll_vote"_L1},
                           {"chat_id"_L1, c.chat},
                           {"poll_id"_L1, "P"_L1},
                           {"option_id"_L1, option}});
        };
        vote(annas, u"a"_s);
        QCOMPARE(berts.next(u"poll_vote"_s)["results"_L1].toObject(),
                 (QJsonObject{{"a"_L1, 1}, {"b"_L1, 0}}));
        vote(annas, u"b"_s); // changes her mind
        QCOMPARE(berts.next(u"poll_vote"_s)["results"_L1].toObject(),
                 (QJsonObject{{"a"_L1, 0}, {"b"_L1, 1}}));
        vote(berts, u"b"_s);
        const QJsonObject event = annas.next(u"poll_vote"_s);
        QCOMPARE(event["voter_id"_L1], QJsonValue(QString::number(c.bert.id)));
        QCOMPARE(event["option_id"_L1], QJsonValue("b"_L1));
        QCOMPARE(event["results"_L1].toObject(), (QJsonObject{{"a"_L1, 0}, {"b"_L1, 2}}));
        Listener carls(c.site, c.carl);
        vote(carls, u"a"_s);
        vote(berts, u"c"_s);
        QVERIFY(!carls.has({}) && !berts.has(u"poll_vote"_s));
        QVERIFY(!annas.has(u"poll_vote"_s));
    }

    void zkMessagesKeepTheirEnvelope() {
        Company c;
        Listener berts(c.site, c.bert);
        const QJsonObject payload{{"ciphertext"_L1, "c"_L1}, {"nonce"_L1, "n"_L1}};
        c.anna.post(u"chats/%1/messages"_s.arg(c.chat),
                    {{"content"_L1, u"🔒 Encrypted"_s}, {"zk_payload"_L1, payload}, {"reply_to"_L1, "r"_L1}});
        const QJsonValue stored = c.bert.messages(c.chat)[0];
        for (const QJsonValue &message :
             {stored, QJsonValue(berts.next(u"messenger_message"_s)["message"_L1])}) {
            QCOMPARE(message["zk_encrypted"_L1], QJsonValue(true));
            QCOMPARE(message["zk_payload"_L1].toObject(), payload);
            QCOMPARE(message["reply_to"_L1], QJsonValue("r"_L1));
        }
    }
};

QTEST_GUILESS_MAIN(ActionsTest)
#include "tst_homeserver_actions.moc"

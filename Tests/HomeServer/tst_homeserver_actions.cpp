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
    void editsReachOthers();
    void deletionsReachOthers();
    void onlyTheAuthorChangesAMessage();
    void reactionsToggle();
    void starsAreOnesOwn();
    void mentionsAreForMembers_data();
    void mentionsAreForMembers();
    void pinsBelongToTheirChat();
    void searchFindsWords_data();
    void searchFindsWords();
    void searchKeepsOut();
    void foldersAreOnesOwn();
    void channelsHaveOneVoice();
    void savedChatIsOne();
    void invitesLetIn();
    void badRemoteIds_data();
    void badRemoteIds();
    void pollVotesAreCounted();
    void zkMessagesKeepTheirEnvelope();

private:
    // Two people in a group, with a listener each.
    struct Pair {
        Site site;
        Person anna{site, u"anna"_s};
        Person bert{site, u"bert"_s};
        QString chat = anna.groupWith({bert.id});
        Listener annas{site, anna};
        Listener berts{site, bert};
    };
};

void ActionsTest::editsReachOthers() {
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"helo"_s);
    pair.site.now += 5;
    const Reply reply = pair.anna.send("PATCH", u"messages/"_s + id, R"({"content":"hello"})");
    QCOMPARE(reply.json["message"_L1]["content"_L1], QJsonValue("hello"_L1));
    const QJsonObject event = pair.berts.next(u"messenger_message_edited"_s);
    QCOMPARE(event["chat_id"_L1], QJsonValue(pair.chat));
    QCOMPARE(event["message"_L1]["id"_L1], QJsonValue(id));
    QCOMPARE(event["message"_L1]["content"_L1], QJsonValue("hello"_L1));
    QVERIFY(!pair.annas.has(u"messenger_message_edited"_s));
    QCOMPARE(pair.bert.messages(pair.chat)[0]["edited_at"_L1].toDouble(), pair.site.now);
    for (const char *bad : {R"({"content":""})", R"({"content":4})", "{}"})
        QCOMPARE(pair.anna.send("PATCH", u"messages/"_s + id, bad).status, 400);
}

void ActionsTest::deletionsReachOthers() {
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"oops"_s);
    pair.bert.post(u"messages/%1/star"_s.arg(id));
    pair.bert.post(u"messages/%1/reactions"_s.arg(id), {{"emoji"_L1, "👍"_L1}});
    QCOMPARE(pair.anna.send("DELETE", u"messages/"_s + id).status, 200);
    QCOMPARE(pair.berts.next(u"messenger_message_deleted"_s)["message_id"_L1], QJsonValue(id));
    QVERIFY(pair.bert.messages(pair.chat).isEmpty());
    QVERIFY(pair.bert.get(u"starred"_s).json["messages"_L1].toArray().isEmpty());
    QVERIFY(pair.bert.get(u"search/global?q=oops"_s).json["messages"_L1].toArray().isEmpty());
    QCOMPARE(pair.anna.send("DELETE", u"messages/"_s + id).status, 404);
    QVERIFY(pair.bert.chat(pair.chat)["last_message"_L1].isNull());
}

void ActionsTest::onlyTheAuthorChangesAMessage() {
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"mine"_s);
    QCOMPARE(pair.bert.send("PATCH", u"messages/"_s + id, R"({"content":"x"})").status, 403);
    QCOMPARE(pair.bert.send("DELETE", u"messages/"_s + id).status, 403);
    QCOMPARE(pair.anna.messages(pair.chat)[0]["content"_L1], QJsonValue("mine"_L1));
}

void ActionsTest::reactionsToggle() {
    Pair pair;
    const QString path = u"messages/%1/reactions"_s.arg(pair.anna.say(pair.chat, u"hi"_s));
    const QJsonObject thumb{{"emoji"_L1, u"👍"_s}};
    pair.anna.post(path, thumb);
    const QJsonArray both = pair.bert.post(path, thumb).json["reactions"_L1].toArray();
    QCOMPARE(both.size(), 2);
    QCOMPARE(both[1]["user_id"_L1], QJsonValue(QString::number(pair.bert.id)));
    QCOMPARE(pair.annas.next(u"messenger_reaction"_s)["reactions"_L1].toArray(), both);
    pair.bert.post(path, {{"emoji"_L1, u"🔥"_s}});
    QCOMPARE(pair.bert.post(path, thumb).json["reactions"_L1].toArray().size(), 2);
    QCOMPARE(pair.anna.messages(pair.chat)[0]["reactions"_L1].toArray().size(), 2);
    QCOMPARE(pair.anna.post(path, {{"emoji"_L1, QString(33, u'x')}}).status, 400);
}

void ActionsTest::starsAreOnesOwn() {
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"hi"_s);
    const QString path = u"messages/%1/star"_s.arg(id);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(pair.bert.post(path).json["status"_L1], QJsonValue("starred"_L1));
    QCOMPARE(pair.bert.get(u"starred"_s).json["messages"_L1][0]["id"_L1], QJsonValue(id));
    QVERIFY(pair.anna.get(u"starred"_s).json["messages"_L1].toArray().isEmpty());
    QCOMPARE(pair.bert.send("DELETE", path).json["status"_L1], QJsonValue("unstarred"_L1));
    QVERIFY(pair.bert.get(u"starred"_s).json["messages"_L1].toArray().isEmpty());
}

void ActionsTest::mentionsAreForMembers_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("mentions");
    QTest::newRow("plain") << u"@bert look"_s << 1;
    QTest::newRow("another case") << u"look, @BERT"_s << 1;
    QTest::newRow("with punctuation") << u"(ask @bert!)"_s << 1;
    QTest::newRow("twice") << u"@bert @bert"_s << 1;
    QTest::newRow("longer name") << u"@berta"_s << 0;
    QTest::newRow("no sign") << u"bert"_s << 0;
    QTest::newRow("only signs") << QString(5000, u'@') << 0;
}

void ActionsTest::mentionsAreForMembers() {
    QFETCH(QString, text);
    QFETCH(int, mentions);
    Pair pair;
    pair.anna.say(pair.chat, text);
    // A name in a chat its bearer is not in says nothing to them.
    pair.anna.say(pair.anna.groupWith({}), text);
    QCOMPARE(pair.bert.get(u"mentions"_s).json["mentions"_L1].toArray().size(), mentions);
}

void ActionsTest::pinsBelongToTheirChat() {
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"hi"_s);
    QCOMPARE(pair.anna.post(u"chats/lobby/messages/pin"_s, {{"message_id"_L1, id}}).status, 404);
    QCOMPARE(pair.anna.post(u"chats/%1/messages/pin"_s.arg(pair.chat), {}).status, 400);
}

void ActionsTest::searchFindsWords_data() {
    QTest::addColumn<QString>("query");
    QTest::addColumn<int>("hits");
    QTest::newRow("word") << u"budget"_s << 1;
    QTest::newRow("beginning, other case") << u"BUDG"_s << 1;
    QTest::newRow("two words in any order") << u"third budget"_s << 1;
    QTest::newRow("one word missing") << u"budget unicorn"_s << 0;
    QTest::newRow("Russian") << u"СОВЕЩАН"_s << 1;
    QTest::newRow("edited away") << u"draft"_s << 0;
    QTest::newRow("operators") << u"budget\" OR \"NEAR("_s << 0;
    QTest::newRow("only signs") << u"\"*^:-()"_s << 0;
    QTest::newRow("column name") << u"content : budget"_s << 0;
}

void ActionsTest::searchFindsWords() {
    QFETCH(QString, query);
    QFETCH(int, hits);
    Pair pair;
    const QString id = pair.anna.say(pair.chat, u"the draft"_s);
    pair.anna.send("PATCH", u"messages/"_s + id, R"({"content":"the budget of the third quarter"})");
    pair.anna.say(pair.chat, u"Завтра совещание"_s);
    const QString encoded = QString::fromLatin1(QUrl::toPercentEncoding(query));
    const Reply reply = pair.bert.get(u"search/global?q="_s + encoded);
    QCOMPARE(reply.status, 200);
    QCOMPARE(reply.json["messages"_L1].toArray().size(), hits);
}

void ActionsTest::searchKeepsOut() {
    Pair pair;
    Person carl(pair.site, u"carl"_s);
    pair.anna.say(pair.chat, u"secret plan"_s);
    pair.anna.say(lobby(), u"public plan"_s);
    const QJsonArray found = carl.get(u"search/global?q=plan"_s).json["messages"_L1].toArray();
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0]["chat_id"_L1], QJsonValue(lobby()));
    QCOMPARE(carl.post(u"search/semantic"_s, {{"query"_L1, "plan"_L1}}).json["results"_L1].toArray().size(),
             1);
    QCOMPARE(carl.post(u"/api/chat/memory"_s, {{"query"_L1, "plan"_L1}}).json["sources"_L1].toArray().size(),
             1);
    QCOMPARE(carl.post(u"/api/chat/memory"_s, {{"query"_L1, "plan"_L1}, {"chat_id"_L1, pair.chat}}).status,
             403);
}

void ActionsTest::foldersAreOnesOwn() {
    Pair pair;
    const QString folder = pair.anna.post(u"folders"_s, {{"name"_L1, "Work"_L1}, {"icon"_L1, "📁"_L1}})
                               .json["folder"_L1]["id"_L1]
                               .toString();
    const auto change = [&](const QString &chat, const QString &action) {
        return pair.anna
            .post(u"folders/%1/chats"_s.arg(folder), {{"chat_id"_L1, chat}, {"action"_L1, action}})
            .status;
    };
    QCOMPARE(change(pair.chat, u"add"_s), 200);
    QCOMPARE(change(pair.chat, u"add"_s), 200);
    QCOMPARE(change(u"unknown"_s, u"add"_s), 404);
    QCOMPARE(change(pair.bert.groupWith({}), u"add"_s), 403);
    QCOMPARE(change(pair.chat, u"burn"_s), 400);
    QCOMPARE(pair.anna.get(u"folders"_s).json["folders"_L1][0]["chat_ids"_L1].toArray(),
             QJsonArray{pair.chat});
    QVERIFY(pair.bert.get(u"folders"_s).json["folders"_L1].toArray().isEmpty());
    QCOMPARE(change(pair.chat, u"remove"_s), 200);
    QVERIFY(pair.anna.get(u"folders"_s).json["folders"_L1][0]["chat_ids"_L1].toArray().isEmpty());
}

void ActionsTest::channelsHaveOneVoice() {
    Pair pair;
    const QString channel =
        pair.anna.post(u"channels"_s, {{"title"_L1, "News"_L1}}).json["channel"_L1]["id"_L1].toString();
    const QString code = pair.anna.post(u"chats/%1/invite"_s.arg(channel), {{"expires_hours"_L1, 1}})
                             .json["code"_L1]
                             .toString();
    QCOMPARE(pair.bert.post(u"invites/"_s + code).status, 200);
    QCOMPARE(pair.bert.get(u"channels"_s).json["channels"_L1][0]["title"_L1], QJsonValue("News"_L1));
    QCOMPARE(pair.bert.post(u"chats/%1/messages"_s.arg(channel), {{"content"_L1, "x"_L1}}).status, 403);
    pair.anna.say(channel, u"first"_s);
    QCOMPARE(pair.berts.next(u"messenger_message"_s)["chat_id"_L1], QJsonValue(channel));
}

void ActionsTest::savedChatIsOne() {
    Pair pair;
    const QString saved = pair.anna.get(u"saved"_s).json["chat"_L1]["id"_L1].toString();
    QCOMPARE(pair.anna.get(u"saved"_s).json["chat"_L1]["id"_L1].toString(), saved);
    QVERIFY(pair.bert.get(u"saved"_s).json["chat"_L1]["id"_L1].toString() != saved);
    pair.anna.say(saved, u"note"_s);
    QCOMPARE(pair.anna.chat(saved)["last_message"_L1], QJsonValue("note"_L1));
    QCOMPARE(pair.bert.get(u"chats/%1/messages"_s.arg(saved)).status, 403);
}

void ActionsTest::invitesLetIn() {
    Pair pair;
    Person carl(pair.site, u"carl"_s);
    const QString path = u"chats/%1/invite"_s.arg(pair.chat);
    const Reply invite = pair.bert.post(path, {{"expires_hours"_L1, 168}});
    const QString code = invite.json["code"_L1].toString();
    QVERIFY(invite.json["url"_L1].toString().endsWith(code));
    QVERIFY(pair.bert.post(path, {{"expires_hours"_L1, 168}}).json["code"_L1] != code);
    for (const QJsonValue &hours :
         {QJsonValue(0), QJsonValue(-1), QJsonValue(1e9), QJsonValue("1"_L1), QJsonValue(1.5)})
        QCOMPARE(pair.bert.post(path, {{"expires_hours"_L1, hours}}).status, 400);
    // Two is company.
    const QString direct = pair.bert.directChatWith(pair.anna);
    QCOMPARE(pair.bert.post(u"chats/%1/invite"_s.arg(direct), {{"expires_hours"_L1, 1}}).status, 400);

    pair.anna.say(pair.chat, u"before"_s);
    QCOMPARE(carl.post(u"invites/"_s + code).json["chat"_L1]["id"_L1], QJsonValue(pair.chat));
    QCOMPARE(carl.chat(pair.chat)["unread_count"_L1], QJsonValue(0));
    QCOMPARE(carl.post(u"invites/guess"_s).status, 404);
    pair.site.now += 169 * 3600;
    QCOMPARE(carl.post(u"invites/"_s + code).status, 404);
}

void ActionsTest::badRemoteIds_data() {
    QTest::addColumn<QByteArray>("remote");
    for (const char *remote :
         {"[]", R"(["x:far.example"])", R"(["@:far.example"])", R"(["@x"])", R"(["@x:"])", "[7]", "7"})
        QTest::newRow(remote) << QByteArray(remote);
}

void ActionsTest::badRemoteIds() {
    QFETCH(QByteArray, remote);
    Site site;
    Person anna(site, u"anna"_s);
    const QByteArray body = R"({"title":"F","local_participants":[],"remote_participants":)" + remote + "}";
    QCOMPARE(anna.send("POST", u"chats/federated"_s, body).status, 400);
    QCOMPARE(anna.get(u"chats"_s).json["chats"_L1].toArray().size(), 3);
}

void ActionsTest::pollVotesAreCounted() {
    Pair pair;
    const QJsonObject poll{
        {"id"_L1, "P"_L1},
        {"isMultipleChoice"_L1, false},
        {"options"_L1, QJsonArray{QJsonObject{{"id"_L1, "a"_L1}}, QJsonObject{{"id"_L1, "b"_L1}}}}};
    pair.anna.post(u"chats/%1/messages"_s.arg(pair.chat),
                   {{"type"_L1, "poll"_L1}, {"content"_L1, QString::fromUtf8(QJsonDocument(poll).toJson())}});
    // What only looks like a poll does not get in the way.
    pair.anna.post(u"chats/%1/messages"_s.arg(pair.chat),
                   {{"type"_L1, "poll"_L1}, {"content"_L1, "no JSON"_L1}});
    const auto vote = [&](Listener &listener, const QString &option) {
        listener.send({{"type"_L1, "poll_vote"_L1},
                       {"chat_id"_L1, pair.chat},
                       {"poll_id"_L1, "P"_L1},
                       {"option_id"_L1, option}});
    };
    vote(pair.annas, u"a"_s);
    QCOMPARE(pair.berts.next(u"poll_vote"_s)["results"_L1].toObject(),
             (QJsonObject{{"a"_L1, 1}, {"b"_L1, 0}}));
    vote(pair.annas, u"b"_s); // changes her mind
    QCOMPARE(pair.berts.next(u"poll_vote"_s)["results"_L1].toObject(),
             (QJsonObject{{"a"_L1, 0}, {"b"_L1, 1}}));
    vote(pair.berts, u"b"_s);
    const QJsonObject event = pair.annas.next(u"poll_vote"_s);
    QCOMPARE(event["voter_id"_L1], QJsonValue(QString::number(pair.bert.id)));
    QCOMPARE(event["option_id"_L1], QJsonValue("b"_L1));
    QCOMPARE(event["results"_L1].toObject(), (QJsonObject{{"a"_L1, 0}, {"b"_L1, 2}}));
    vote(pair.berts, u"c"_s);
    QVERIFY(!pair.berts.has(u"poll_vote"_s));
    QVERIFY(!pair.annas.has(u"poll_vote"_s));
}

void ActionsTest::zkMessagesKeepTheirEnvelope() {
    Pair pair;
    const QJsonObject payload{{"ciphertext"_L1, "c"_L1}, {"nonce"_L1, "n"_L1}};
    pair.anna.post(u"chats/%1/messages"_s.arg(pair.chat),
                   {{"content"_L1, u"🔒 Encrypted"_s}, {"zk_payload"_L1, payload}, {"reply_to"_L1, "r"_L1}});
    const QJsonValue stored = pair.bert.messages(pair.chat)[0];
    for (const QJsonValue &message :
         {stored, QJsonValue(pair.berts.next(u"messenger_message"_s)["message"_L1])}) {
        QCOMPARE(message["zk_encrypted"_L1], QJsonValue(true));
        QCOMPARE(message["zk_payload"_L1].toObject(), payload);
        QCOMPARE(message["reply_to"_L1], QJsonValue("r"_L1));
    }
}

QTEST_GUILESS_MAIN(ActionsTest)
#include "tst_homeserver_actions.moc"

// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

const QString path = u"chats/lobby/messages"_s;

Headers key(const QByteArray &value) {
    return {{"Idempotency-Key", value}};
}

} // namespace

class MessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void newcomerFindsCompany() {
        Site site;
        const Person anna(site, u"anna"_s);
        Person bert(site, u"bert"_s);
        int direct = 0;
        const QJsonArray chats = bert.get(u"chats"_s).at("chats").toArray();
        QCOMPARE(chats.size(), 3);
        for (const QJsonValue chat : chats) {
            QCOMPARE(chat["unread_count"_L1], QJsonValue(0));
            QVERIFY(chat["ai_enabled"_L1].isBool());
            for (const QJsonValue participant : chat["participants"_L1].toArray())
                QVERIFY(participant["user_id"_L1].isDouble());
            if (chat["type"_L1] == "direct"_L1 && chat["title"_L1].isNull())
                ++direct;
        }
        QCOMPARE(direct, 2);
        QCOMPARE(bert.chat(lobby())["participants"_L1].toArray().size(), 2);

        QStringList names;
        const Reply contacts = bert.get(u"contacts?user_id=%1"_s.arg(bert.id));
        for (const QJsonValue contact : contacts.at("contacts").toArray()) {
            QVERIFY(contact["id"_L1].isString() && contact["status"_L1].isString());
            names.append(contact["username"_L1].toString());
        }
        QCOMPARE(QSet<QString>(names.begin(), names.end()),
                 (QSet<QString>{u"ai_orvanetalk"_s, u"anna"_s, u"bot_echo"_s}));
        QCOMPARE(bert.get(u"federation/info"_s).at("features").toArray(), QJsonArray{"assistant-contact"_L1});
        QCOMPARE(bert.get(u"users/search?q=%1"_s.arg(anna.id)).text("users.0.id"), QString::number(anna.id));
    }

    void oneDirectChatForTwo() {
        Company c;
        const QString direct = c.anna.directChatWith(c.bert);
        QVERIFY(!direct.isEmpty());
        QCOMPARE(c.bert.directChatWith(c.anna), direct);
        const QString saved = c.anna.get(u"saved"_s).text("chat.id");
        QCOMPARE(c.anna.get(u"saved"_s).text("chat.id"), saved);
        QVERIFY(c.bert.get(u"saved"_s).text("chat.id") != saved);
        c.anna.say(saved, u"note"_s);
        QCOMPARE(c.anna.chat(saved)["last_message"_L1], QJsonValue("note"_L1));
        QCOMPARE(c.bert.get(u"chats/%1/messages"_s.arg(saved)).status, 403);
    }

    void keysAreHonoured() {
        Company c;
        const Reply first = c.anna.post(path, {{"content"_L1, "a"_L1}}, key("K-1"));
        QCOMPARE(first.status, 201);
        const auto again = [&] { return c.anna.post(path, {{"content"_L1, "a"_L1}}, key("K-1")); };
        QCOMPARE(again().status, 201);
        QCOMPARE(again().body, first.body);
        // Another person's key of the same name is another key.
        QVERIFY(c.bert.post(path, {{"content"_L1, "b"_L1}}, key("K-1")).body != first.body);
        QCOMPARE(c.anna.messages(lobby()).size(), 2);
        // The same key cannot mean a message in another chat.
        QCOMPARE(c.anna.post(u"chats/%1/messages"_s.arg(c.chat), {{"content"_L1, "a"_L1}}, key("K-1")).status,
                 409);
        // What was refused is not remembered.
        QCOMPARE(c.anna.post(path, {{"content"_L1, ""_L1}}, key("K-2")).status, 400);
        QCOMPARE(c.anna.post(path, {{"content"_L1, "c"_L1}}, key("K-2")).status, 201);
        c.site.restart();
        QCOMPARE(again().body, first.body);
        QCOMPARE(c.anna.messages(lobby()).size(), 3);
    }

    void aKeyThatIsAFreeUuidIsTheMessagesId() {
        Company c;
        const QString wanted = u"3F2504E0-4F89-41D3-9A0C-0305E82C3301"_s;
        const auto idOf = [&](Person &person, const QByteArray &value) {
            return person.post(u"chats/%1/messages"_s.arg(c.chat), {{"content"_L1, "x"_L1}}, key(value))
                .text("message.id");
        };
        QCOMPARE(idOf(c.anna, wanted.toLatin1()), wanted);
        // Somebody else's message stays what it is.
        const QString other = idOf(c.bert, wanted.toLatin1());
        QVERIFY(!other.isEmpty() && other != wanted);
        QVERIFY(idOf(c.anna, "../../K") != "../../K"_L1);
        QVERIFY(idOf(c.anna, "{3F2504E0-4F89-41D3-9A0C-0305E82C3302}").size() == 36);
    }

    void concurrentDuplicateIsOneMessage() {
        Site site;
        Person anna(site, u"anna"_s);
        QList<QNetworkReply *> replies;
        for (int i = 0; i < 6; ++i)
            replies.append(anna.start("POST", u"chats/lobby/messages"_s, {{"content"_L1, "a"_L1}}, key("K")));
        QSet<QByteArray> bodies;
        for (QNetworkReply *reply : replies)
            bodies.insert(finish(reply).body);
        QCOMPARE(bodies.size(), 1);
        QCOMPARE(anna.messages(lobby()).size(), 1);
    }

    void pages() {
        Company c;
        QStringList ids;
        for (int i = 0; i < 7; ++i)
            ids.append(c.anna.say(c.chat, QString::number(i))); // all within the same second
        const auto idsOf = [&](const QString &query) {
            QStringList found;
            for (const QJsonValue message : c.bert.messages(c.chat, query))
                found.append(message["id"_L1].toString());
            return found;
        };
        QCOMPARE(idsOf(u"?limit=50"_s), ids);
        QCOMPARE(idsOf(u"?limit=3"_s), ids.mid(4));
        QCOMPARE(idsOf(u"?limit=3&before=%1"_s.arg(ids[4])), ids.mid(1, 3));
        QCOMPARE(idsOf(u"?limit=3&before=%1"_s.arg(ids[0])), QStringList());
    }

    void unreadFollowsReceipts() {
        Company c;
        c.anna.say(c.chat, u"1"_s);
        const QString first = c.anna.say(c.chat, u"2"_s);
        const QString second = c.anna.say(c.chat, u"3"_s);
        c.bert.say(c.chat, u"own"_s);
        c.anna.say(c.chat, u"4"_s);
        const auto unread = [&] { return c.bert.chat(c.chat)["unread_count"_L1].toInt(); };
        QCOMPARE(unread(), 4);
        QCOMPARE(c.anna.chat(c.chat)["unread_count"_L1].toInt(), 1);

        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        const auto read = [&](const QString &message) {
            berts.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, c.chat}, {"message_id"_L1, message}});
        };
        read(second);
        const QJsonObject told = annas.next(u"messenger_read_receipt"_s);
        QCOMPARE(told["chat_id"_L1], QJsonValue(c.chat));
        QCOMPARE(told["message_id"_L1], QJsonValue(second));
        QCOMPARE(unread(), 1);
        // A late receipt for an older message does not bring anything back.
        read(first);
        QVERIFY(!berts.has(u"messenger_read_receipt"_s));
        QCOMPARE(unread(), 1);
        QVERIFY(!annas.has(u"messenger_read_receipt"_s));
    }

    void everythingSurvivesRestart() {
        Company c;
        c.anna.say(c.chat, u"Привет 🦉"_s);
        const QByteArray before = c.bert.get(u"chats"_s).body;
        const qint64 cursor = c.bert.get(u"sync?since=0"_s).at("cursor").toInteger();
        QVERIFY(cursor > 0);
        QCOMPARE(c.bert.get(u"sync?since=0"_s).at("changed_chats").toArray(), QJsonArray{c.chat});
        c.site.restart();
        QCOMPARE(c.bert.get(u"chats"_s).body, before);
        QCOMPARE(c.bert.messages(c.chat)[0]["content"_L1], QJsonValue(u"Привет 🦉"_s));
        const Reply sync = c.bert.get(u"sync?since=%1"_s.arg(cursor));
        QCOMPARE(sync.at("cursor").toInteger(), cursor);
        QCOMPARE(sync.count("changed_chats"), 0);
    }
};

QTEST_GUILESS_MAIN(MessagesTest)
#include "tst_homeserver_messages.moc"

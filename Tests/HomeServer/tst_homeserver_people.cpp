// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class PeopleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void requestsAreAccepted() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        annas.has({});
        annas.events.clear();
        berts.events.clear();
        const auto ask = [](Person &from, const Person &to) {
            return from.post(u"contacts/request"_s, {{"contact_id"_L1, to.id}}).text("status");
        };
        QCOMPARE(ask(c.anna, c.bert), u"pending"_s);
        const Reply requests = c.bert.get(u"contacts/requests"_s);
        QCOMPARE(requests.text("requests.0.id"), QString::number(c.anna.id));
        QCOMPARE(requests.text("requests.0.username"), u"anna"_s);

        const QString path = u"contacts/requests/%1"_s.arg(c.anna.id);
        QCOMPARE(c.bert.post(path, {{"action"_L1, "accept"_L1}}).text("status"), u"accepted"_s);
        QCOMPARE(annas.next(u"user_status"_s)["user_id"_L1], QJsonValue(QString::number(c.bert.id)));
        QCOMPARE(berts.next(u"user_status"_s)["user_id"_L1], QJsonValue(QString::number(c.anna.id)));
        QCOMPARE(c.anna.get(u"chats"_s).count("chats"), 5);
        QCOMPARE(c.bert.get(u"contacts/requests"_s).count("requests"), 0);
        QCOMPARE(c.bert.post(path, {{"action"_L1, "accept"_L1}}).status, 404);
        QCOMPARE(ask(c.anna, c.bert), u"accepted"_s);

        // Requests that meet, and one that is turned down.
        QCOMPARE(ask(c.carl, c.bert), u"pending"_s);
        QCOMPARE(ask(c.bert, c.carl), u"accepted"_s);
        QCOMPARE(c.bert.get(u"contacts/requests"_s).count("requests"), 0);
        ask(c.carl, c.anna);
        const qsizetype chats = c.carl.get(u"chats"_s).count("chats");
        QCOMPARE(c.anna.post(u"contacts/requests/%1"_s.arg(c.carl.id), {{"action"_L1, "reject"_L1}})
                     .text("status"),
                 u"rejected"_s);
        QCOMPARE(c.anna.get(u"contacts/requests"_s).count("requests"), 0);
        QCOMPARE(c.carl.get(u"chats"_s).count("chats"), chats);
    }

    void oneTimeKeysAreHandedOutOnce() {
        Company c;
        const QString path = u"keys/%1"_s.arg(c.anna.id);
        const auto upload = [&](const QStringList &keys) {
            return c.anna
                .post(u"keys/upload"_s, {{"identity_key"_L1, "aWQ="_L1},
                                         {"signed_pre_key"_L1, "cHJl"_L1},
                                         {"signed_pre_key_signature"_L1, "c2ln"_L1},
                                         {"one_time_pre_keys"_L1, QJsonArray::fromStringList(keys)}})
                .at("uploaded");
        };
        const auto take = [&] { return c.bert.get(path).text("one_time_pre_key"); };
        QCOMPARE(upload({u"MQ=="_s, u"Mg=="_s}), QJsonValue(2));
        QCOMPARE((QSet<QString>{take(), take()}), (QSet<QString>{u"MQ=="_s, u"Mg=="_s}));
        QVERIFY(!c.bert.get(path).json.contains("one_time_pre_key"_L1));
        QCOMPARE(c.bert.get(path).text("identity_key"), u"aWQ="_s);
        QCOMPARE(c.anna.get(path + u"/count"_s).at("pre_keys_remaining"), QJsonValue(0));
        // The later upload wins as a whole.
        QCOMPARE(upload({u"Mw=="_s, u"NA=="_s}), QJsonValue(2));
        QCOMPARE(upload({u"NQ=="_s}), QJsonValue(1));
        QCOMPARE(take(), u"NQ=="_s);
    }

    void zkKeysAreForMembers() {
        Company c;
        QJsonObject keys;
        for (const Person *person : {&c.anna, &c.bert})
            keys[QString::number(person->id)] = QJsonObject{{"nonce"_L1, u"for-%1"_s.arg(person->id)}};
        QJsonObject body{{"participants"_L1, QJsonArray{c.anna.id, c.bert.id}},
                         {"encrypted_meta"_L1, QJsonObject{{"nonce"_L1, "m"_L1}}},
                         {"wrapped_keys"_L1, keys}};
        const QString chat = c.anna.post(u"chats/zk"_s, body).text("chat_id");
        const QString path = u"chats/%1/zk/key"_s.arg(chat);
        QCOMPARE(c.bert.chat(chat)["zk_mode"_L1], QJsonValue(true));
        QCOMPARE(c.bert.get(path).text("wrapped_key.nonce"), u"for-%1"_s.arg(c.bert.id));
        QCOMPARE(c.carl.get(path).status, 403);
        // Somebody left without a key: no group at all.
        body["participants"_L1] = QJsonArray{c.bert.id, c.carl.id};
        QCOMPARE(c.anna.post(u"chats/zk"_s, body).status, 400);
        QCOMPARE(c.carl.get(u"chats"_s).count("chats"), 3);
    }

    void presenceAges() {
        Company c;
        const auto peers = [&](const QString &query) { return c.anna.get(u"p2p/discover"_s + query); };
        const auto come = [](Person &person, const QString &address) {
            return person.post(u"p2p/register"_s, {{"local_ip"_L1, address}}).text("subnet");
        };
        QCOMPARE(come(c.anna, u"192.168.1.9"_s), u"192.168.1.0/24"_s);
        come(c.bert, u"192.168.1.7"_s);
        come(c.carl, u"10.0.0.7"_s);
        const Listener berts(c.site, c.bert);
        const Reply near = peers(u"?subnet=192.168.1.0/24"_s);
        QCOMPARE(near.count("peers"), 1); // not oneself, and not another network
        QCOMPARE(near.text("peers.0.user_id"), QString::number(c.bert.id));
        QCOMPARE(near.text("peers.0.local_ip"), u"192.168.1.7"_s);
        QCOMPARE(near.at("peers.0.online"), QJsonValue(true));
        QCOMPARE(peers({}).count("peers"), 2);
        QCOMPARE(peers({}).text("subnet"), u"192.168.1.0/24"_s);

        c.site.now += 100;
        come(c.carl, u"10.0.0.8"_s);
        c.site.now += 21;
        QCOMPARE(peers({}).count("peers"), 1);
        QCOMPARE(peers({}).text("peers.0.local_ip"), u"10.0.0.8"_s);
        c.carl.send("DELETE", u"p2p/register"_s, "{}");
        QCOMPARE(peers({}).count("peers"), 0);
    }

    void signalsArePassedOn() {
        Company c;
        const Person annasPhone = Person::signIn(c.site, u"anna"_s, u"phone"_s);
        Listener annas(c.site, c.anna);
        Listener phones(c.site, annasPhone);
        Listener berts(c.site, c.bert);
        for (const auto &type :
             {u"call_offer"_s, u"call_answer"_s, u"call_hangup"_s, u"ice_candidate"_s, u"p2p_signal"_s}) {
            annas.send({{"type"_L1, type},
                        {"to"_L1, QString::number(c.bert.id)},
                        {"from"_L1, "1"_L1},
                        {"sdp"_L1, "S"_L1},
                        {"chat_id"_L1, lobby()}});
            const QJsonObject signal = berts.next(type);
            QCOMPARE(signal["from"_L1], QJsonValue(QString::number(c.anna.id))); // whatever the sender claims
            QCOMPARE(signal["sdp"_L1], QJsonValue("S"_L1));
            QVERIFY(!signal.contains("to"_L1));
            QVERIFY(!annas.has(type));
            QVERIFY(!phones.has(type));
            // To oneself: the other devices.
            annas.send({{"type"_L1, type}, {"to"_L1, QString::number(c.anna.id)}});
            QVERIFY(!phones.next(type).isEmpty());
            for (const QJsonValue &nobody :
                 {QJsonValue("999"_L1), QJsonValue("x"_L1), QJsonValue(), QJsonValue(true)})
                annas.send({{"type"_L1, type}, {"to"_L1, nobody}});
            QVERIFY(!annas.has(type));
            QVERIFY(!berts.has(type));
        }
    }

    void ownBotAnswers() {
        Company c;
        const auto create = [&](const QString &webhook, bool open) {
            return c.anna
                .post(u"bots"_s, {{"name"_L1, "My Helper!"_L1},
                                  {"webhook_url"_L1, webhook},
                                  {"user_id"_L1, "0"_L1},
                                  {"is_public"_L1, open}})
                .at("bot");
        };
        const QJsonValue first = create(u"builtin://echo"_s, true);
        const QJsonValue second = create({}, false);
        QCOMPARE(first["username"_L1], QJsonValue("bot_my_helper"_L1));
        QVERIFY(second["username"_L1] != first["username"_L1]);
        QCOMPARE(c.anna.get(u"bots?user_id=0"_s).count("bots"), 2);
        QCOMPARE(c.bert.get(u"bots?user_id=0"_s).count("bots"), 0);
        QCOMPARE(c.bert.get(u"bots/discover"_s).count("bots"), 2); // with the built-in one

        const QString path = u"bots/%1"_s.arg(first["id"_L1].toString());
        const QString chat = c.bert.post(path + u"/chat"_s).text("chat_id");
        Listener berts(c.site, c.bert);
        c.bert.say(chat, u"echo?"_s);
        QCOMPARE(valueAt(berts.next(u"messenger_message"_s), "message.content"), QJsonValue("echo?"_L1));
        const Reply stats = c.bert.get(path + u"/stats"_s);
        QCOMPARE(stats.at("messages_sent"), QJsonValue(1));
        QCOMPARE(stats.text("webhook_type"), u"builtin"_s);
        QCOMPARE(stats.at("has_mini_app"), QJsonValue(false));
        QCOMPARE(c.bert.get(path + u"/webapp-init?chat_id="_s + chat).status, 404);
        // One without a voice stays silent.
        const QString mute = c.anna.post(u"bots/%1/chat"_s.arg(second["id"_L1].toString())).text("chat_id");
        Listener annas(c.site, c.anna);
        c.anna.say(mute, u"hello?"_s);
        QVERIFY(!annas.has(u"typing"_s));
    }

    void skillsAreRated() {
        Company c;
        const auto publish = [&](const QJsonValue &slug) {
            return c.anna.post(u"skills"_s, {{"name"_L1, u"Краткий пересказ"_s},
                                             {"system_prompt"_L1, "p"_L1},
                                             {"category"_L1, "text"_L1},
                                             {"slug"_L1, slug},
                                             {"triggers"_L1, QJsonArray()}});
        };
        const QJsonValue skill = publish({}).at("skill");
        QCOMPARE(skill["slug"_L1], QJsonValue(u"краткий_пересказ"_s));
        QVERIFY(publish({}).at("skill.slug") != skill["slug"_L1]);
        QCOMPARE(publish(skill["slug"_L1]).error(), u"slug_taken"_s);
        const QString path = u"skills/%1/rate"_s.arg(skill["id"_L1].toString());
        c.anna.post(path, {{"rating"_L1, 5}});
        for (const int rating : {1, 2}) // thinks again
            c.bert.post(path, {{"rating"_L1, rating}});
        for (int i = 0; i < 2; ++i)
            c.bert.post(u"chats/lobby/skills/"_s + skill["id"_L1].toString());
        const Reply listed = c.bert.get(u"skills"_s);
        QCOMPARE(listed.at("categories").toArray(), QJsonArray{"text"_L1});
        QCOMPARE(listed.at("skills.0.rating_avg"), QJsonValue(3.5));
        QCOMPARE(listed.at("skills.0.install_count"), QJsonValue(1));
    }
};

QTEST_GUILESS_MAIN(PeopleTest)
#include "tst_homeserver_people.moc"

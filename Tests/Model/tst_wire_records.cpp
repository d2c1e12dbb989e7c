// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/ChatFolder.h"
#include "Model/ChatListAnswer.h"
#include "Model/MessengerMessage.h"
#include "Model/PreKeyBundle.h"
#include "Support/InRow.h"

#include <QUuid>

using namespace orvane;

namespace {

QByteArray answerWith(const QByteArray &keys) {
    return R"({"chats":[{"id":"1"},{"id":"3")" + keys + "}]}";
}

// Without the key where there is no value.
QJsonObject with(const char *key, const char *value) {
    QJsonObject raw{{"id", "m1"}, {"sender_id", "7"}, {"content", "a"}, {"created_at", 1.5}};
    if (!*value)
        raw.remove(QLatin1StringView(key));
    else
        raw.insert(QLatin1StringView(key), json::parse(value));
    return raw;
}

} // namespace

class TestWireRecords : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneWrongKeyFailsTheWholeAnswer() {
        const auto check = [](const QByteArray &bytes) {
            IN_ROW(bytes);
            QVERIFY_EXCEPTION_THROWN(CR::decode(bytes), DecodingError);
        };
        for (const char *bytes :
             {"[]", "7", "null", "{}", R"({"chats":null})", R"({"chats":{}})", R"({"chats":"x"})",
              R"({"chats":[null]})", R"({"chats":["3"]})", R"({"chats":[[]]})", R"({"chats":[{}]})",
              R"({"chats":[{"id":3}]})", R"({"chats":[{"id":null}]})", R"({"items":[]})", R"({"Chats":[]})"})
            check(bytes);
        using List = QByteArrayList;
        const QList<std::pair<List, List>> wrong{
            {{"type", "title", "last_message", "room_id"}, {"7", "true", "[]", "{}"}},
            {{"ai_enabled", "federated", "zk_mode"}, {"0", "1", "\"true\"", "[]"}},
            {{"unread_count"}, {"1.5", "\"1\"", "true", "9223372036854775808", "1e300"}},
            {{"last_msg_at"}, {"\"1.5\"", "true", "[1]"}},
            {{"participants"},
             {"{}", "\"7\"", "[7]", "[\"7\"]", "[null]", "[{}]", R"([{"user_id":"7"}])",
              R"([{"user_id":7.5}])", R"([{"user_id":null}])", R"([{"user_id":7},{"id":8}])"}}};
        for (const auto &[keys, values] : wrong) {
            for (const QByteArray &key : keys) {
                for (const QByteArray &value : values)
                    check(answerWith(",\"" + key + "\":" + value));
            }
        }
    }

    void bytesThatAreNoJsonAreTold() {
        for (const char *bytes : {"", "<html><body>502</body></html>", R"({"chats":[{"id":"3")"}) {
            IN_ROW(bytes);
            QVERIFY_EXCEPTION_THROWN(CR::decode(bytes), JsonError);
        }
    }

    void nullCountsAsAbsent() {
        for (const QByteArray key : {"type", "title", "participants", "last_message", "last_msg_at",
                                     "unread_count", "ai_enabled", "federated", "zk_mode", "room_id"})
            QVERIFY2(CR::decode(answerWith(",\"" + key + "\":null")) == CR::decode(answerWith({})), key);
    }

    void becomesAChat() {
        // Type, unread count, participants, and what else is so of the chat.
        const auto check = [](const char *keys, const QString &expected) {
            IN_ROW(keys);
            const QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000);
            const MessengerChat chat = CR::decode(answerWith(keys)).chats.at(1).toChat(now);
            QCOMPARE(chat.id, "3");
            QString got = rawText(chat.type) + ' ' + QString::number(chat.unreadCount);
            for (const QString &participant : chat.participants)
                got += ' ' + participant;
            for (const auto &[is, name] :
                 {std::pair(chat.aiEnabled, " ai"), std::pair(chat.federated, " federated"),
                  std::pair(chat.zkMode, " zk"), std::pair(chat.lastMessage.has_value(), " preview")})
                got += is ? name : "";
            QCOMPARE(got, expected);
            QCOMPARE(chat.createdAt, now);
            QCOMPARE(chat.updatedAt, now);
            QVERIFY(chat.settings == MessengerChatSettings());
        };
        check("", "direct 0 ai");
        check(R"(,"type":"group")", "group 0 ai");
        check(R"(,"type":"channel")", "channel 0 ai");
        check(R"(,"type":"Group")", "direct 0 ai");
        check(R"(,"type":"secret")", "direct 0 ai");
        check(R"(,"ai_enabled":false)", "direct 0");
        check(R"(,"ai_enabled":true,"federated":true)", "direct 0 ai federated");
        check(R"(,"zk_mode":true)", "direct 0 ai zk");
        check(R"(,"participants":[{"user_id":-1},{"user_id":9223372036854775807,"name":"x"}])",
              "direct 0 -1 9223372036854775807 ai");
        check(R"(,"unread_count":3.0)", "direct 3 ai");
        check(R"(,"last_message":"a")", "direct 0 ai");
        check(R"(,"last_msg_at":5)", "direct 0 ai");
        check(R"(,"last_message":"","last_msg_at":0)", "direct 0 ai preview");
    }

    void previewHasAFreshIdAndNoSender() {
        const CR answer = CR::decode(
            answerWith(R"(,"title":"","room_id":"!r","last_message":"Привет","last_msg_at":1.25)"));
        const MessengerChat chat = answer.chats.at(1).toChat(QDateTime::currentDateTime());
        QCOMPARE(chat.title, QString());
        QCOMPARE(chat.roomId, "!r");
        MessengerMessage expected;
        expected.id = chat.lastMessage->id;
        expected.chatID = "3";
        expected.content = "Привет";
        expected.timestamp = QDateTime::fromMSecsSinceEpoch(1250);
        expected.deliveryStatus = DeliveryStatus::sent;
        QVERIFY(chat.lastMessage == expected);
        QVERIFY(!QUuid::fromString(expected.id).isNull());
        QVERIFY(answer.chats.at(1).toChat(QDateTime::currentDateTime()).lastMessage->id != expected.id);
    }

    void recordsWithoutARequiredKeyAreSkipped() {
        const auto check = [](const char *key, const char *value) {
            IN_ROW(QByteArray(key) + ' ' + value);
            QVERIFY(!MessengerMessage::fromHistory("3", with(key, value)));
        };
        for (const char *key : {"id", "sender_id", "content"}) {
            for (const char *value : {"", "null", "7", "true", "[]", "{}"})
                check(key, value);
        }
        for (const char *value : {"", "null", "\"1.5\"", "true", "[1]"})
            check("created_at", value);
    }

    void optionalKeysFollowTheirRules() {
        using enum MessageType;
        const auto check = [](const QJsonObject &raw, MessageType type, qint64 editedAtMs = -1) {
            IN_ROW(json::compact(raw));
            const auto message = MessengerMessage::fromHistory("3", raw);
            QVERIFY(message);
            QCOMPARE(message->type, type);
            QCOMPARE(message->editedAt ? message->editedAt->toMSecsSinceEpoch() : -1, editedAtMs);
            QVERIFY(message->reactions.isEmpty());
        };
        check(with("chat_id", "\"5\""), text);
        check(with("type", "\"aiResponse\""), aiResponse);
        for (const char *unknown : {"\"banana\"", "\"Image\"", "1", "\"image\\u0000\""})
            check(with("type", unknown), text);
        check(with("edited_at", "2.25"), text, 2250);
        check(with("edited_at", "\"2.25\""), text);
        check(with("edited", "true"), text, 1500);
        check(with("edited", "false"), text);
        check(with("edited", "1"), text);
        QJsonObject both = with("edited_at", "2.25");
        both.insert("edited", false);
        check(both, text, 2250);
        both.insert("edited_at", QJsonValue());
        both.insert("edited", true);
        check(both, text, 1500);
        check(with("reactions", R"({"emoji":"x","user_id":1})"), text);
    }

    void historyIsSentAndReadAndCarriesNothingElse() {
        QJsonObject raw = with("reactions", R"([{"emoji":"👍","user_id":7}])");
        for (const char *key : {"replyToID", "reply_to", "ttl", "isStarred", "poll", "chat_id", "attachment"})
            raw.insert(QLatin1StringView(key), "5");
        MessengerMessage expected;
        expected.id = "m1";
        expected.chatID = "3";
        expected.senderID = "7";
        expected.content = "a";
        expected.timestamp = QDateTime::fromMSecsSinceEpoch(1500);
        MessageReaction reaction;
        reaction.emoji = "👍";
        reaction.userIDs = {"7"};
        expected.reactions = {reaction};
        expected.isRead = true;
        expected.deliveryStatus = DeliveryStatus::sent;
        QVERIFY(MessengerMessage::fromHistory("3", raw) == expected);
    }

    void reactionsAreFoldedByEmoji() {
        const auto check = [](const char *list, const QString &expected) {
            IN_ROW(list);
            QStringList folded;
            for (const MessageReaction &reaction :
                 MessengerMessage::parseReactions(json::parse(list).toArray()))
                folded.append(reaction.emoji + ' ' + reaction.userIDs.join(' '));
            folded.sort();
            QCOMPARE(folded.join(';'), expected);
        };
        check("[]", "");
        check(R"([{"emoji":"👍","user_id":7},{"emoji":"👍","user_id":"8"}])", "👍 7 8");
        check(R"([{"emoji":"a","user_id":1},{"emoji":"b","user_id":1},{"emoji":"a","user_id":2}])",
              "a 1 2;b 1");
        check(R"([{"emoji":"a","user_id":1},{"emoji":"a","user_id":"1"}])", "a 1 1");
        check(R"([{"emoji":"a","user_id":1.5}])", "");
        check(R"([{"emoji":"a","user_id":2.0}])", "a 2");
        check(R"([{"emoji":"a","user_id":true},{"emoji":"a","user_id":null},{"emoji":"a"}])", "");
        check(R"([{"emoji":7,"user_id":1},{"user_id":1},"a",null,[],7])", "");
        check(R"([{"emoji":"a","user_id":-9223372036854775808},{"emoji":"a","user_id":9223372036854775808}])",
              "a -9223372036854775808");
        check(R"([{"emoji":"","user_id":""}])", " ");
    }

    void veryManyReactionsAreFolded() {
        QJsonArray list;
        for (int i = 0; i < 100'000; ++i)
            list.append(QJsonObject{{"emoji", QString::number(i % 50)}, {"user_id", i}});
        const auto reactions = MessengerMessage::parseReactions(list);
        QCOMPARE(reactions.size(), 50);
        QCOMPARE(reactions.first().userIDs.size(), 2000);
    }

    void foldersFillWhatIsMissing() {
        // Nothing for a folder that is refused, else name, icon and chats.
        const auto check = [](const char *json, const QString &expected) {
            IN_ROW(json);
            const auto folder = ChatFolder::fromAPI(json::parseObject(json).value());
            QCOMPARE(folder ? folder->name + ' ' + folder->icon + " (" + folder->chatIds.join(',') + ')'
                            : QString(),
                     expected);
        };
        check("{}", "");
        check(R"({"id":7})", "");
        check(R"({"id":null,"name":"a"})", "");
        check(R"({"id":"f"})", "Folder 📁 ()");
        check(R"({"id":"","name":"","icon":""})", "  ()");
        check(R"({"id":"f","name":7,"icon":true,"chat_ids":"1"})", "Folder 📁 ()");
        check(R"({"id":"f","name":"Работа","icon":"🏠","chat_ids":["2","1","2"]})", "Работа 🏠 (2,1,2)");
        check(R"({"id":"f","chat_ids":[1,2.0]})", "Folder 📁 (1,2)");
        check(R"({"id":"f","chat_ids":[1,"2"]})", "Folder 📁 ()");
        check(R"({"id":"f","chat_ids":[1,2.5]})", "Folder 📁 ()");
        check(R"({"id":"f","chat_ids":[null]})", "Folder 📁 ()");
        check(R"({"id":"f","chat_ids":{"0":1}})", "Folder 📁 ()");
        check(R"({"id":"f","chatIds":["1"]})", "Folder 📁 ()");
    }

    void bundlesTakeStandardBase64Only() {
        const QStringList keys{"identity_key", "signed_pre_key", "signed_pre_key_signature"};
        // Null bytes for a value that is refused.
        const auto check = [&](const char *name, const QJsonValue &value, const QByteArray &bytes = {}) {
            IN_ROW(name);
            QJsonObject good{{"one_time_pre_key", value}};
            for (const QString &key : keys)
                good.insert(key, "a2V5");
            const auto bundle = PreKeyBundle::from(good);
            QVERIFY(bundle);
            QCOMPARE(bundle->oneTimePreKey, bytes.isNull() ? std::nullopt : std::optional(bytes));
            for (const QString &key : keys) {
                QJsonObject changed = good;
                changed.insert(key, value);
                QCOMPARE(PreKeyBundle::from(changed).has_value(), !bytes.isNull());
            }
        };
        check("three bytes", "AAEC", QByteArray("\0\1\2", 3));
        check("two bytes", "AAE=", QByteArray("\0\1", 2));
        check("one byte", "/w==", "\xff");
        check("nothing", "", "");
        for (const char *text :
             {"AAE", "AA=", "AAEC====", "AA==AAEC", "=AAE", "====", "_-_-", "AAEC\nAAEC", "AA C", "ЖЖЖЖ"})
            check(text, text);
        check("a character of nothing", QString(QChar(u'\0')) + "AEC");
        check("number", 1234);
        check("null", QJsonValue());
        check("list", QJsonArray{0, 1, 2});
        check("absent", QJsonValue::Undefined);
    }

    void bundlesNameTheirThreeKeys() {
        const auto object = json::parseObject(R"({"identity_key":"AQ==","signed_pre_key":"Ag==",)"
                                              R"("signed_pre_key_signature":"Aw=="})");
        QVERIFY(PreKeyBundle::from(*object) == (PreKeyBundle{"\1", "\2", "\3", std::nullopt}));
    }
};

QTEST_GUILESS_MAIN(TestWireRecords)
#include "tst_wire_records.moc"

// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/MessengerMessage.h"

#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QJsonObject with(const char *key, const char *value) {
    QJsonObject raw{
        {u"id"_s, u"m1"_s}, {u"sender_id"_s, u"7"_s}, {u"content"_s, u"a"_s}, {u"created_at"_s, 1.5}};
    if (!value)
        raw.remove(QLatin1StringView(key));
    else if (key)
        raw.insert(QLatin1StringView(key), json::parse(value));
    return raw;
}

} // namespace

class TestMessageRecord : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recordsWithoutARequiredKeyAreSkipped_data();
    void recordsWithoutARequiredKeyAreSkipped();
    void optionalKeysFollowTheirRules_data();
    void optionalKeysFollowTheirRules();
    void historyIsSentAndReadAndCarriesNothingElse();
    void reactionsAreFoldedByEmoji_data();
    void reactionsAreFoldedByEmoji();
    void veryManyReactionsAreFolded();
};

void TestMessageRecord::recordsWithoutARequiredKeyAreSkipped_data() {
    QTest::addColumn<QJsonObject>("raw");
    for (const char *key : {"id", "sender_id", "content"}) {
        for (const char *value : {static_cast<const char *>(nullptr), "null", "7", "true", "[]", "{}"})
            QTest::addRow("%s %s", key, value ? value : "missing") << with(key, value);
    }
    for (const char *value : {static_cast<const char *>(nullptr), "null", "\"1.5\"", "true", "[1]"})
        QTest::addRow("created_at %s", value ? value : "missing") << with("created_at", value);
}

void TestMessageRecord::recordsWithoutARequiredKeyAreSkipped() {
    QFETCH(QJsonObject, raw);
    QVERIFY(!MessengerMessage::fromHistory(u"3"_s, raw));
}

void TestMessageRecord::optionalKeysFollowTheirRules_data() {
    QTest::addColumn<QJsonObject>("raw");
    QTest::addColumn<MessageType>("type");
    QTest::addColumn<qint64>("editedAtMs");
    using enum MessageType;
    const qint64 never = -1;
    QTest::newRow("plain") << with(nullptr, "") << text << never;
    QTest::newRow("type known") << with("type", "\"aiResponse\"") << aiResponse << never;
    QTest::newRow("type unknown") << with("type", "\"banana\"") << text << never;
    QTest::newRow("type in capitals") << with("type", "\"Image\"") << text << never;
    QTest::newRow("type a number") << with("type", "1") << text << never;
    QTest::newRow("type with a character of nothing") << with("type", "\"image\\u0000\"") << text << never;
    QTest::newRow("edited_at") << with("edited_at", "2.25") << text << qint64(2250);
    QTest::newRow("edited_at a text") << with("edited_at", "\"2.25\"") << text << never;
    QTest::newRow("edited") << with("edited", "true") << text << qint64(1500);
    QTest::newRow("not edited") << with("edited", "false") << text << never;
    QTest::newRow("edited a number") << with("edited", "1") << text << never;
    QJsonObject both = with("edited_at", "2.25");
    both.insert(u"edited"_s, false);
    QTest::newRow("edited_at wins over edited") << both << text << qint64(2250);
    both.insert(u"edited_at"_s, QJsonValue());
    both.insert(u"edited"_s, true);
    QTest::newRow("edited_at null leaves edited") << both << text << qint64(1500);
    QTest::newRow("reactions no list")
        << with("reactions", "{\"emoji\":\"x\",\"user_id\":1}") << text << never;
}

void TestMessageRecord::optionalKeysFollowTheirRules() {
    QFETCH(QJsonObject, raw);
    const auto message = MessengerMessage::fromHistory(u"3"_s, raw);
    QVERIFY(message);
    QTEST(message->type, "type");
    QTEST(message->editedAt ? message->editedAt->toMSecsSinceEpoch() : qint64(-1), "editedAtMs");
    QVERIFY(message->reactions.isEmpty());
}

void TestMessageRecord::historyIsSentAndReadAndCarriesNothingElse() {
    QJsonObject raw = with("reactions", R"([{"emoji":"👍","user_id":7}])");
    for (const char *key : {"replyToID", "reply_to", "ttl", "isStarred", "poll", "chat_id", "attachment"})
        raw.insert(QLatin1StringView(key), u"5"_s);
    MessengerMessage expected;
    expected.id = u"m1"_s;
    expected.chatID = u"3"_s;
    expected.senderID = u"7"_s;
    expected.content = u"a"_s;
    expected.timestamp = QDateTime::fromMSecsSinceEpoch(1500);
    MessageReaction reaction;
    reaction.emoji = u"👍"_s;
    reaction.userIDs = {u"7"_s};
    expected.reactions = {reaction};
    expected.isRead = true;
    expected.deliveryStatus = DeliveryStatus::sent;
    QVERIFY(MessengerMessage::fromHistory(u"3"_s, raw) == expected);
}

void TestMessageRecord::reactionsAreFoldedByEmoji_data() {
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<QString>("folded");
    const auto row = [](const char *list, const char *folded) {
        QTest::newRow(list) << QByteArray(list) << QString::fromUtf8(folded);
    };
    row("[]", "");
    row(R"([{"emoji":"👍","user_id":7},{"emoji":"👍","user_id":"8"}])", "👍 7 8");
    row(R"([{"emoji":"a","user_id":1},{"emoji":"b","user_id":1},{"emoji":"a","user_id":2}])", "a 1 2;b 1");
    row(R"([{"emoji":"a","user_id":1},{"emoji":"a","user_id":"1"}])", "a 1 1");
    row(R"([{"emoji":"a","user_id":1.5}])", "");
    row(R"([{"emoji":"a","user_id":2.0}])", "a 2");
    row(R"([{"emoji":"a","user_id":true},{"emoji":"a","user_id":null},{"emoji":"a"}])", "");
    row(R"([{"emoji":7,"user_id":1},{"user_id":1},"a",null,[],7])", "");
    row(R"([{"emoji":"a","user_id":-9223372036854775808},{"emoji":"a","user_id":9223372036854775808}])",
        "a -9223372036854775808");
    row(R"([{"emoji":"","user_id":""}])", " ");
}

void TestMessageRecord::reactionsAreFoldedByEmoji() {
    QFETCH(QByteArray, list);
    QStringList folded;
    for (const MessageReaction &reaction : MessengerMessage::parseReactions(json::parse(list).toArray()))
        folded.append(reaction.emoji + u' ' + reaction.userIDs.join(u' '));
    folded.sort();
    QTEST(folded.join(u';'), "folded");
}

void TestMessageRecord::veryManyReactionsAreFolded() {
    QJsonArray list;
    for (int i = 0; i < 100'000; ++i)
        list.append(QJsonObject{{u"emoji"_s, QString::number(i % 50)}, {u"user_id"_s, i}});
    const auto reactions = MessengerMessage::parseReactions(list);
    QCOMPARE(reactions.size(), 50);
    QCOMPARE(reactions.first().userIDs.size(), 2000);
}

QTEST_GUILESS_MAIN(TestMessageRecord)

#include "tst_message_record.moc"

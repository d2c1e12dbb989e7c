// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Model/ChatListAnswer.h"

#include <QTest>
#include <QUuid>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QByteArray answerWith(const QByteArray &keys) {
    return R"({"chats":[{"id":"1"},{"id":"3")" + keys + "}]}";
}

} // namespace

class TestChatListAnswer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneWrongKeyFailsTheWholeAnswer_data();
    void oneWrongKeyFailsTheWholeAnswer();
    void bytesThatAreNoJsonAreTold_data();
    void bytesThatAreNoJsonAreTold();
    void nullCountsAsAbsent_data();
    void nullCountsAsAbsent();
    void becomesAChat_data();
    void becomesAChat();
    void previewHasAFreshIdAndNoSender();
};

void TestChatListAnswer::oneWrongKeyFailsTheWholeAnswer_data() {
    QTest::addColumn<QByteArray>("bytes");
    for (const QByteArray bytes :
         {"[]", "7", "null", "{}", R"({"chats":null})", R"({"chats":{}})", R"({"chats":"x"})",
          R"({"chats":[null]})", R"({"chats":["3"]})", R"({"chats":[[]]})", R"({"chats":[{}]})",
          R"({"chats":[{"id":3}]})", R"({"chats":[{"id":null}]})", R"({"items":[]})", R"({"Chats":[]})"})
        QTest::newRow(bytes.constData()) << bytes;
    const QByteArray texts[] = {"type", "title", "last_message", "room_id"};
    const QByteArray booleans[] = {"ai_enabled", "federated", "zk_mode"};
    const auto row = [](const QByteArray &key, const QByteArray &value) {
        const QByteArray pair = ",\"" + key + "\":" + value;
        QTest::newRow(pair.constData()) << answerWith(pair);
    };
    for (const QByteArray &key : texts) {
        for (const QByteArray value : {"7", "true", "[]", "{}"})
            row(key, value);
    }
    for (const QByteArray &key : booleans) {
        for (const QByteArray value : {"0", "1", "\"true\"", "[]"})
            row(key, value);
    }
    for (const QByteArray value : {"1.5", "\"1\"", "true", "9223372036854775808", "1e300"})
        row("unread_count", value);
    for (const QByteArray value : {"\"1.5\"", "true", "[1]"})
        row("last_msg_at", value);
    for (const QByteArray value :
         {"{}", "\"7\"", "[7]", "[\"7\"]", "[null]", "[{}]", "[{\"user_id\":\"7\"}]", "[{\"user_id\":7.5}]",
          "[{\"user_id\":null}]", "[{\"user_id\":7},{\"id\":8}]"})
        row("participants", value);
}

void TestChatListAnswer::oneWrongKeyFailsTheWholeAnswer() {
    QFETCH(QByteArray, bytes);
    QVERIFY_EXCEPTION_THROWN(CR::decode(bytes), DecodingError);
}

void TestChatListAnswer::bytesThatAreNoJsonAreTold_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("page") << QByteArray("<html><body>502</body></html>");
    QTest::newRow("half") << QByteArray(R"({"chats":[{"id":"3")");
}

void TestChatListAnswer::bytesThatAreNoJsonAreTold() {
    QFETCH(QByteArray, bytes);
    QVERIFY_EXCEPTION_THROWN(CR::decode(bytes), JsonError);
}

void TestChatListAnswer::nullCountsAsAbsent_data() {
    QTest::addColumn<QByteArray>("key");
    for (const QByteArray key : {"type", "title", "participants", "last_message", "last_msg_at",
                                 "unread_count", "ai_enabled", "federated", "zk_mode", "room_id"})
        QTest::newRow(key.constData()) << key;
}

void TestChatListAnswer::nullCountsAsAbsent() {
    QFETCH(QByteArray, key);
    QCOMPARE(CR::decode(answerWith(",\"" + key + "\":null")), CR::decode(answerWith({})));
}

void TestChatListAnswer::becomesAChat_data() {
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<ChatType>("type");
    QTest::addColumn<QList<QString>>("participants");
    QTest::addColumn<qint64>("unreadCount");
    QTest::addColumn<QString>("flags");
    QTest::addColumn<bool>("hasPreview");
    const QList<QString> none;
    const auto row = [](const char *keys, ChatType type, const QList<QString> &participants, qint64 unread,
                        const char *flags, bool preview) {
        QTest::newRow(keys) << QByteArray(keys) << type << participants << unread
                            << QString::fromLatin1(flags) << preview;
    };
    using enum ChatType;
    row("", direct, none, 0, "ai", false);
    row(R"(,"type":"group")", group, none, 0, "ai", false);
    row(R"(,"type":"channel")", channel, none, 0, "ai", false);
    row(R"(,"type":"Group")", direct, none, 0, "ai", false);
    row(R"(,"type":"secret")", direct, none, 0, "ai", false);
    row(R"(,"ai_enabled":false)", direct, none, 0, "", false);
    row(R"(,"ai_enabled":true,"federated":true,"zk_mode":true)", direct, none, 0, "ai federated zk", false);
    row(R"(,"participants":[{"user_id":-1},{"user_id":9223372036854775807,"name":"x"}])", direct,
        {u"-1"_s, u"9223372036854775807"_s}, 0, "ai", false);
    row(R"(,"unread_count":3.0)", direct, none, 3, "ai", false);
    row(R"(,"last_message":"a")", direct, none, 0, "ai", false);
    row(R"(,"last_msg_at":5)", direct, none, 0, "ai", false);
    row(R"(,"last_message":"","last_msg_at":0)", direct, none, 0, "ai", true);
}

void TestChatListAnswer::becomesAChat() {
    QFETCH(QByteArray, keys);
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    const MessengerChat chat = CR::decode(answerWith(keys)).chats.at(1).toChat(now);
    QCOMPARE(chat.id, u"3"_s);
    QTEST(chat.type, "type");
    QTEST(chat.participants, "participants");
    QTEST(chat.unreadCount, "unreadCount");
    QStringList flags;
    if (chat.aiEnabled)
        flags.append(u"ai"_s);
    if (chat.federated)
        flags.append(u"federated"_s);
    if (chat.zkMode)
        flags.append(u"zk"_s);
    QTEST(flags.join(u' '), "flags");
    QTEST(chat.lastMessage.has_value(), "hasPreview");
    QCOMPARE(chat.createdAt, now);
    QCOMPARE(chat.updatedAt, now);
    QVERIFY(chat.settings == MessengerChatSettings());
}

void TestChatListAnswer::previewHasAFreshIdAndNoSender() {
    const CR answer =
        CR::decode(answerWith(R"(,"title":"","room_id":"!r","last_message":"Привет","last_msg_at":1.25)"));
    const MessengerChat chat = answer.chats.at(1).toChat(QDateTime::currentDateTime());
    QCOMPARE(chat.title, QString());
    QCOMPARE(chat.roomId, u"!r"_s);
    MessengerMessage expected;
    expected.id = chat.lastMessage->id;
    expected.chatID = u"3"_s;
    expected.content = u"Привет"_s;
    expected.timestamp = QDateTime::fromMSecsSinceEpoch(1250);
    expected.deliveryStatus = DeliveryStatus::sent;
    QVERIFY(chat.lastMessage == expected);
    QVERIFY(!QUuid::fromString(expected.id).isNull());
    QVERIFY(answer.chats.at(1).toChat(QDateTime::currentDateTime()).lastMessage->id != expected.id);
}

QTEST_GUILESS_MAIN(TestChatListAnswer)

#include "tst_chat_list_answer.moc"

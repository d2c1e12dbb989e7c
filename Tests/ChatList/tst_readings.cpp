// SPDX-License-Identifier: MIT
#include "ChatList/Chats/ListEvents.h"
#include "ChatList/Finding/FoundMessages.h"
#include "ChatList/Organising/ChatAnswer.h"
#include "ChatList/People/ListedPerson.h"
#include "Model/MessengerUser.h"
#include "Support/HostileShapes.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const QDateTime start = QDateTime::currentDateTimeUtc();

QString told(const MessengerUser &user) {
    return QStringList{user.id, user.displayName, user.username.value_or(u"-"_s), rawText(user.status)}.join(
        u'/');
}
QString told(const MessengerChat &chat) {
    QStringList words{chat.id, rawText(chat.type), chat.title.value_or(u"-"_s)};
    if (chat.federated)
        words << u"federated"_s;
    if (chat.zkMode)
        words << u"zk"_s;
    return (words << chat.participants << chat.roomId.value_or(QString())).join(u'/');
}
QString told(const SearchHit &hit) {
    return hit.chatID + u'/' + hit.senderName + u'/' + hit.line() + (hit.timestamp >= start ? u""_s : u"?"_s);
}
QString told(const StarredMessage &message) {
    const QString time = message.timestamp >= start ? u"now"_s : message.timestamp.toString(u"yyyy"_s);
    return QStringList{message.id, message.chatID, message.senderID, message.content, time}.join(u'/');
}
QString told(const ArrivedMessage &arrived) {
    const MessengerMessage &message = arrived.message;
    const QString id = message.id.size() == 36 ? u"fresh"_s : message.id;
    const bool isNow = message.timestamp >= start && message.chatID == arrived.chatID;
    return QStringList{arrived.chatID, id, message.senderID, message.content}.join(u'/') +
           (isNow ? u""_s : u"?"_s);
}
QString told(const PresenceChange &change) {
    return change.userID + u'/' + rawText(change.status);
}
template <typename T>
QString told(const std::optional<T> &value) {
    return value ? told(*value) : QString();
}
QString told(const ListedPerson &person) {
    return QStringList{person.userID, person.name, person.username, person.status}.join(u'/');
}

} // namespace

class TestReadings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyKeyIsTakenInItsTypeAlone();
    void textsOfPeopleAreShortLines();
};

void TestReadings::everyKeyIsTakenInItsTypeAlone() {
    MessengerUser ben;
    ben.displayName = u"Ben"_s;
    const Contacts contacts{{u"9"_s, ben}};
    const auto contact = [](const QJsonObject &map) { return told(MessengerUser::fromContact(map)); };
    const auto listed = [](const QJsonObject &map) { return told(listedPeople({map}).value(0)); };
    const auto hit = [&](const QJsonObject &map) { return told(SearchHit::from(map, contacts)); };
    const auto starred = [](const QJsonObject &map) { return told(StarredMessage::from(map)); };
    const auto group = [](const QJsonObject &map) { return told(createdGroup(map, u"Asked"_s, {u"9"_s})); };
    const auto channel = [](const QJsonObject &map) { return told(createdChannel(map, u"Asked"_s)); };
    const auto listedOne = [](const QJsonObject &map) { return told(listedChannel(map)); };
    const auto saved = [](const QJsonObject &map) { return chatIdIn(map).value_or(QString()); };
    const auto arrived = [](const QJsonObject &map) { return told(ArrivedMessage::from(map)); };
    const auto presence = [](const QJsonObject &map) { return told(PresenceChange::from(map)); };
    checkAgainstHostileShapes({
        {"a contact", R"({"id":"1","display_name":"Ann","username":"a","status":"online"})", contact,
         "1/Ann/a/online", "id; display_name 1/a/a/online; username 1/Ann/-/online; status 1/Ann/a/offline"},
        {"a contact with nothing but an id", R"({"id":"1"})", contact, "1//-/offline"},
        {"a contact who is away", R"({"id":"1","display_name":"","status":"away"})", contact, "1//-/offline"},
        {"a person of the sheet", R"({"id":"1","display_name":"Ann","username":"a","status":"away"})", listed,
         "1/Ann/a/away",
         "id /Ann/a/away; display_name 1/a/a/away; username 1/Ann//away; status 1/Ann/a/offline"},
        {"a person of whom nothing is known", "{}", listed, "/unknown//offline"},
        {"a hit", R"({"id":"m","chat_id":"3","sender_id":"9","content":"a\n b","created_at":1})", hit,
         "3/Ben/a b", "chat_id; sender_id; content; id 3/Ben/a b"},
        {"a hit of a stranger", R"({"chat_id":"3","sender_id":"8","content":"x"})", hit, "3/8/x"},
        {"a starred message", R"({"id":"m","chat_id":"3","sender_id":"9","content":"x","created_at":10})",
         starred, "m/3/9/x/1970", "id; chat_id; sender_id; content"},
        {"a starred message without a time",
         R"({"id":"m","chat_id":"3","sender_id":"9","content":"x","created_at":"1"})", starred,
         "m/3/9/x/now"},
        {"a group", R"({"chat":{"id":"5","title":"T","federated":true,"zk_mode":true,"room_id":"r"}})", group,
         "5/group/T/federated/zk/9/r",
         "chat.id; chat.title 5/group/Asked/federated/zk/9/r; chat.federated 5/group/T/zk/9/r; chat.zk_mode "
         "5/group/T/federated/9/r; chat.room_id 5/group/T/federated/zk/9/"},
        {"a group that is not wrapped", R"({"chat_id":"5"})", group, "5/group/Asked/9/", "chat_id"},
        {"a channel", R"({"channel":{"id":"5","title":"T"}})", channel, "5/channel/T/",
         "channel.id; channel.title 5/channel/Asked/"},
        {"a channel that is not wrapped", R"({"id":"5","chat_id":"6"})", channel, "5/channel/Asked/",
         "id 6/channel/Asked/"},
        {"a channel of the list", R"({"id":"5","title":"T","name":"N"})", listedOne, "5/channel/T/",
         "id; title 5/channel/N/; name 5/channel/T/"},
        {"a channel without a title", R"({"id":"5"})", listedOne, "5/channel/-/"},
        {"the saved chat", R"({"chat":{"id":"5"}})", saved, "5", "chat.id"},
        {"a message", R"({"chat_id":"3","message":{"id":"m","sender_id":"9","content":"x","created_at":1}})",
         arrived, "3/m/9/x", "chat_id; message; message.sender_id; message.content; message.id 3/fresh/9/x"},
        {"a message with an empty id", R"({"chat_id":"3","message":{"id":"","sender_id":"9","content":""}})",
         arrived, "3/fresh/9/"},
        {"presence", R"({"user_id":"9","status":"online"})", presence, "9/online", "user_id; status"},
        {"presence of another kind", R"({"user_id":"9","status":"typing"})", presence, "9/offline"},
    });
}

void TestReadings::textsOfPeopleAreShortLines() {
    const QList<ListedPerson> people = listedPeople(
        {{{"id", "9"}, {"display_name", "a\n\r b"}}, {{"id", "9"}, {"username", QString(10'000, 'x')}}});
    QCOMPARE(people.at(0).name, u"a b"_s);
    QCOMPARE(people.at(1).name, QString(200, 'x'));
    QVERIFY(!listedPeople({{}}).at(0).id.isEmpty());
}

ORVANE_TEST_MAIN(TestReadings)
#include "tst_readings.moc"

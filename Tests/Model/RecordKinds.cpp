// SPDX-License-Identifier: MIT
#include "Model/RecordKinds.h"

#include "Model/ChatFolder.h"
#include "Model/DerivedJson.h"
#include "Model/MessengerChat.h"

namespace orvane {

namespace {

template <typename R>
RecordKind kind(const char *name, const QByteArray &example, const QStringList &optionalKeys = {}) {
    RecordKind result{QString::fromLatin1(name), example, optionalKeys, {}, {}, {}};
    result.again = [](const QJsonObject &object) {
        const auto record = derived::fromJson<R>(object);
        return record ? std::optional(derived::toJson(*record)) : std::nullopt;
    };
    result.equal = [](const QJsonObject &one, const QJsonObject &other) {
        return derived::fromJson<R>(one).value() == derived::fromJson<R>(other).value();
    };
    result.hash = [](const QJsonObject &object) { return qHash(derived::fromJson<R>(object).value(), 0); };
    return result;
}

QStringList names(const char *text) {
    return QString::fromLatin1(text).split(u' ');
}

constexpr char forwardInfo[] =
    R"({"originalChatID":"9","originalSenderID":"8","originalSenderName":"Ёж","forwardedAt":-1.5})";
constexpr char attachment[] =
    R"({"type":"audio","url":"https://example.org/a%20b?q=1#f",)"
    R"("localPath":"file:///tmp/a%2Fb","mimeType":"audio/mp4","fileSize":9007199254740993})";
constexpr char reaction[] = R"({"emoji":"👍","userIDs":["7","8"]})";
constexpr char settings[] = R"({"muteUntil":725846400.25,"disappearingMessages":0.5})";
constexpr char pollOption[] = R"({"id":"o1","text":"Да","voters":["7"]})";
constexpr char poll[] =
    R"({"id":"p1","chatID":"3","creatorID":"7","question":"?","options":[{"id":"o1","text":"Да","voters":["7"]}],)"
    R"("isAnonymous":true,"isMultipleChoice":false,"createdAt":0})";
constexpr char user[] =
    R"({"id":"7","displayName":"Anna","username":"anna","avatarURL":"https://example.org/7.png",)"
    R"("status":"away","lastSeen":1,"isBlocked":false,"isAI":true})";
constexpr char folder[] = R"({"id":"f","name":"Работа","icon":"📁","chatIds":["1","2"]})";

QByteArray message() {
    return QByteArray(R"({"id":"m1","chatID":"3","senderID":"7","type":"aiRequest","content":"a\nb",)"
                      R"("timestamp":725846400.5,"editedAt":725846401,"reactions":[)") +
           reaction + R"(],"replyToID":"m0","forwardedFrom":)" + forwardInfo +
           R"(,"ttl":0.25,"isRead":false,"deliveryStatus":"sending","attachment":)" + attachment +
           R"(,"poll":)" + poll + R"(,"isStarred":true})";
}

QByteArray chat() {
    return R"({"id":"3","type":"channel","title":"","participants":["7"],"lastMessage":)" + message() +
           R"(,"unreadCount":-9223372036854775808,"createdAt":0,"updatedAt":1.5,"aiEnabled":true,"settings":)" +
           settings + R"(,"federated":false,"zkMode":true,"roomId":"!r:example.org"})";
}

} // namespace

const QList<RecordKind> &recordKinds() {
    static const QList<RecordKind> kinds{
        kind<ForwardInfo>("ForwardInfo", forwardInfo),
        kind<Attachment>("Attachment", attachment, names("url localPath mimeType fileSize")),
        kind<MessageReaction>("MessageReaction", reaction),
        kind<MessengerMessage>("MessengerMessage", message(),
                               names("editedAt replyToID forwardedFrom ttl attachment poll")),
        kind<MessengerChatSettings>("MessengerChatSettings", settings,
                                    names("muteUntil disappearingMessages")),
        kind<MessengerChat>("MessengerChat", chat(), names("title lastMessage roomId")),
        kind<MessengerUser>("MessengerUser", user, names("username avatarURL lastSeen")),
        kind<ChatFolder>("ChatFolder", folder),
        kind<PollOption>("PollOption", pollOption),
        kind<MessengerPoll>("MessengerPoll", poll),
    };
    return kinds;
}

} // namespace orvane

#include "Invariant.h"
#include "Model/MessengerMessage.h"

#include <QSet>

#include <cstdint>

using namespace orvane;

namespace {

void checkReactions(const QList<MessageReaction> &reactions, const QJsonArray &list) {
    QSet<QString> emojis;
    qsizetype users = 0;
    for (const MessageReaction &reaction : reactions) {
        invariant(!reaction.userIDs.isEmpty(), "somebody stands behind each reaction");
        invariant(!emojis.contains(reaction.emoji), "each emoji comes once");
        emojis.insert(reaction.emoji);
        users += reaction.userIDs.size();
        survivesStoring(reaction);
    }
    invariant(users <= list.size(), "nobody is made up");
}

void checkMessage(const QJsonObject &raw) {
    const QString chatID = QStringLiteral("3");
    const auto message = MessengerMessage::fromHistory(chatID, raw);
    const bool complete =
        raw.value(QLatin1String("id")).isString() && raw.value(QLatin1String("sender_id")).isString() &&
        raw.value(QLatin1String("content")).isString() && raw.value(QLatin1String("created_at")).isDouble();
    invariant(message.has_value() == complete, "the four required keys decide");
    if (!message)
        return;
    invariant(message->chatID == chatID && message->content == raw.value(QLatin1String("content")).toString(),
              "the content is taken as it came");
    invariant(message->timestamp.isValid() && (!message->editedAt || message->editedAt->isValid()),
              "times are times");
    const QJsonArray list = raw.value(QLatin1String("reactions")).toArray();
    checkReactions(message->reactions, list);
    survivesStoring(*message);
}

} // namespace

/// A message of the history, or a list of reactions.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QJsonValue top = parsed(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (top.isObject())
        checkMessage(top.toObject());
    if (top.isArray())
        checkReactions(MessengerMessage::parseReactions(top.toArray()), top.toArray());
    return 0;
}

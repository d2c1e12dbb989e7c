// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Model/MessengerMessage.h"

#include <QSet>

#include <cstdint>

using namespace Qt::StringLiterals;

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
    const QString chatID = u"3"_s;
    const auto message = MessengerMessage::fromHistory(chatID, raw);
    const bool complete = raw.value("id"_L1).isString() && raw.value("sender_id"_L1).isString() &&
                          raw.value("content"_L1).isString() && raw.value("created_at"_L1).isDouble();
    invariant(message.has_value() == complete, "the four required keys decide");
    if (!message)
        return;
    invariant(message->chatID == chatID && message->content == raw.value("content"_L1).toString(),
              "the content is taken as it came");
    invariant(message->timestamp.isValid() && (!message->editedAt || message->editedAt->isValid()),
              "times are times");
    const QJsonArray list = raw.value("reactions"_L1).toArray();
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

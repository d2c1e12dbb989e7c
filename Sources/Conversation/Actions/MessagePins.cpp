// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessagePins.h"

#include "Base/DescribedError.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

MessagePins::MessagePins(Conversation &chat)
    : m_chat(chat) {
    const auto mayDiffer = [this] {
        if (!pinnedMessageIDs.value().isEmpty())
            Q_EMIT pinnedChanged();
    };
    connect(&chat.messages, &RecordListModel::countChanged, this, mayDiffer);
    connect(&chat.messages, &RecordListModel::dataChanged, this, mayDiffer);
    connect(this, &MessagePins::pinnedMessageIDsChanged, this, &MessagePins::pinnedChanged);
}

QList<MessengerMessage> MessagePins::pinnedMessages() const {
    const QList<MessengerMessage> &records = m_chat.messages.records();
    QList<MessengerMessage> pinned;
    std::copy_if(records.cbegin(), records.cend(), std::back_inserter(pinned),
                 [this](const MessengerMessage &message) { return isPinned(message.id); });
    return pinned;
}

void MessagePins::pinUnpin(const MessengerMessage &message) {
    const bool pin = !isPinned(message.id);
    setPinned(message.id, pin);
    launch(pinAtServer(m_chat.hold(this), message.id, pin));
}

void MessagePins::scrollTo() const {
    logLine(u"[Pin] scroll requested"_s);
}

void MessagePins::setPinned(const QString &messageID, bool pinned) {
    QSet<QString> ids = pinnedMessageIDs;
    if (pinned)
        ids.insert(messageID);
    else
        ids.remove(messageID);
    pinnedMessageIDs = ids;
}

QCoro::Task<void> MessagePins::pinAtServer(std::shared_ptr<MessagePins> self, QString messageID, bool pin) {
    MessengerAPI &api = self->m_chat.parts.api;
    try {
        if (pin)
            co_await api.pinMessage(self->m_chat.chatID(), messageID);
        else
            co_await api.unpinMessage(self->m_chat.chatID(), messageID);
    } catch (const std::exception &error) {
        self->setPinned(messageID, !pin);
        logLine(u"[Pin] API error: "_s + localizedDescription(error));
    }
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageTranslation.h"

#include "Base/Json.h"
#include "Base/Task.h"

using namespace Qt::StringLiterals;

namespace orvane {

void MessageTranslation::translate(const MessengerMessage &message) {
    if (m_chat.cipher.plainText(message.content).isEmpty() || translatingMsgID.value())
        return;
    translatingMsgID = message.id;
    launch(translateAtServer(m_chat.hold(this), message.id));
}

QCoro::Task<void> MessageTranslation::translateAtServer(std::shared_ptr<MessageTranslation> self,
                                                        QString messageID) {
    const std::optional<QJsonObject> answer =
        co_await dropped(self->m_chat.parts.api.translateMessage(messageID, u"ru"_s),
                         "a message without a translation is shown as it is");
    if (const auto translated = answer ? json::text(*answer, u"translated") : std::nullopt) {
        QVariantMap texts = self->translatedText;
        texts.insert(messageID, *translated);
        self->translatedText = texts;
    }
    self->translatingMsgID = std::nullopt;
}

} // namespace orvane

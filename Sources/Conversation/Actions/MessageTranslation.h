// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>

namespace orvane {

/// Messages in Russian, one at a time. A failure leaves a message as it is. Main thread.
class MessageTranslation : public QObject {
    Q_OBJECT

    /// By message id, for as long as the screen lives.
    OBSERVABLE(QVariantMap, translatedText)
    OBSERVABLE_OPTIONAL(QString, translatingMsgID)

public:
    /// The conversation holds this.
    explicit MessageTranslation(Conversation &chat)
        : m_chat(chat) {}

    void translate(const MessengerMessage &message);

private:
    static QCoro::Task<void> translateAtServer(std::shared_ptr<MessageTranslation> self, QString messageID);

    Conversation &m_chat;
};

} // namespace orvane

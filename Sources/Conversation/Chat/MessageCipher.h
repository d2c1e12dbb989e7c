// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/EndToEnd.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>

#include <QHash>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace orvane {

/// A text on its way out.
struct OutboundContent {
    /// As typed.
    QString displayContent;
    /// What the server stores.
    QString serverContent;
    /// The envelope of a zero-knowledge group.
    std::optional<QJsonObject> zkPayload;
};

/// What the end-to-end layer does with the texts of one chat. Nothing here fails: what can't be sealed goes
/// out in the clear, and what can't be opened stays as it came. With the layer off, texts pass through. Main
/// thread.
class MessageCipher {
public:
    /// Without `engines`, the layer is off.
    MessageCipher(const MessengerChat &chat, MessengerAPI &api, const EndToEnd *engines);

    bool isOn() const { return m_engines != nullptr; }

    /// Opens a session with `peer` where there is none yet, and tells whether one has begun.
    QCoro::Task<bool> establishSession(QString peer);

    QCoro::Task<OutboundContent> prepareOutboundContent(QString text);
    /// The content of a record of the history.
    QCoro::Task<QString> historyContent(QJsonObject raw, QString content);
    /// The content of a message that arrives while the chat is open; group keys are not tried.
    QCoro::Task<QString> liveContent(QJsonObject raw, QString content);
    /// A content as a person reads it: opened if it is sealed and the session can. Each content is tried once
    /// in a session, since every try spends a step of its chain.
    QString plainText(const QString &content);
    /// Sealed for any chat with which there is a session.
    QString sealedPairwise(const QString &chatID, const QString &text);

private:
    QString sealed(const QString &text);
    std::optional<QString> openedForGroup(const QString &content);
    std::optional<QString> openedPairwise(const QString &content);

    const MessengerChat &m_chat;
    MessengerAPI &m_api;
    const EndToEnd *m_engines;
    /// By content, what a session has made of it.
    QHash<QString, QString> m_read;
};

} // namespace orvane

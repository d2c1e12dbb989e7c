// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerChat.h"

#include <QJsonObject>

#include <optional>

/// What the server says of chats that were just made, or are listed apart from the others. Pure, but for the
/// time: such a chat begins now.
namespace orvane {

MessengerChat newChat(const QString &id, ChatType type, const QString &title);

/// The id of a chat that was made or found: text under `id`, else under `chat_id`, within the object under
/// `chat` or, where the server didn't wrap it, within the answer itself.
std::optional<QString> chatIdIn(const QJsonObject &answer);

/// The group that was asked for under this title, as the server made it; wrapped or not. Absent without an
/// id.
std::optional<MessengerChat> createdGroup(const QJsonObject &answer, const QString &title,
                                          const QStringList &participants);

/// The same for a channel, wrapped under `channel` or not.
std::optional<MessengerChat> createdChannel(const QJsonObject &answer, const QString &title);

/// A channel of the list. Absent without a text `id`; it may have no title.
std::optional<MessengerChat> listedChannel(const QJsonObject &record);

} // namespace orvane

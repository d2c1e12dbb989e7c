// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerChat.h"

#include <QJsonObject>
#include <QStringView>

#include <optional>

namespace orvane {

/// The object under `key`, or the answer itself where the server didn't wrap it. Pure.
QJsonObject unwrapped(const QJsonObject &answer, QStringView key);

/// The text under `id`, else under `chat_id`. Pure.
std::optional<QString> chatIdIn(const QJsonObject &object);

/// A chat that begins now. Pure.
MessengerChat newChat(const QString &id, ChatType type, const QString &title);

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Enumerations.h"
#include "Model/Record.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace orvane {

#define CHAT_FOLDER(FIELD, OPTIONAL, ENUM)                                                                   \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, name)                                                                                     \
    FIELD(QString, icon)                                                                                     \
    FIELD(QList<QString>, chatIds)

/// A named set of chats.
class ChatFolder {
    Q_GADGET
    QML_VALUE_TYPE(chatFolder)
    RECORD(ChatFolder, CHAT_FOLDER)
public:
    /// The server's folder object; absent without a text `id`. Missing names, icons and members have
    /// defaults.
    static std::optional<ChatFolder> fromAPI(const QJsonObject &map);
};

} // namespace orvane

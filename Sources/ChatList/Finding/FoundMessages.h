// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerUser.h"
#include "Model/Record.h"
#include "Model/Words.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace orvane {

#define SEARCH_HIT(FIELD, OPTIONAL, ENUM)                                                                    \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, chatID)                                                                                   \
    FIELD(QString, senderName)                                                                               \
    FIELD(QString, content)                                                                                  \
    FIELD(QDateTime, timestamp)

/// A message that the global search found; `id` is this row's own.
class SearchHit {
    Q_GADGET
    QML_VALUE_TYPE(searchHit)
    /// The content in one line.
    Q_PROPERTY(QString line READ line)
    RECORD(SearchHit, SEARCH_HIT)
public:
    /// The server's record, dated now. Absent without the texts `chat_id`, `content` and `sender_id`.
    static std::optional<SearchHit> from(const QJsonObject &record, const Contacts &contacts);

    QString line() const { return asOneLine(content); }
};

#define STARRED_MESSAGE(FIELD, OPTIONAL, ENUM)                                                               \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, chatID)                                                                                   \
    FIELD(QString, senderID)                                                                                 \
    FIELD(QString, content)                                                                                  \
    FIELD(QDateTime, timestamp)

/// A message that the user starred.
class StarredMessage {
    Q_GADGET
    QML_VALUE_TYPE(starredMessage)
    RECORD(StarredMessage, STARRED_MESSAGE)
public:
    /// The server's record, dated now where it says no time. Absent without the texts `id`, `chat_id`,
    /// `sender_id` and `content`.
    static std::optional<StarredMessage> from(const QJsonObject &record);
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Record.h"

#include <QDateTime>
#include <QString>
#include <QtQml/qqmlregistration.h>

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
    RECORD(SearchHit, SEARCH_HIT)
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
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Record.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace orvane {

#define LISTED_PERSON(FIELD, OPTIONAL, ENUM)                                                                 \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, userID)                                                                                   \
    FIELD(QString, name)                                                                                     \
    FIELD(QString, username)                                                                                 \
    FIELD(QString, status)                                                                                   \
    FIELD(bool, asked)

/// A person as the sheet of contacts shows them. `id` is the row's own, `userID` and `username` may be empty,
/// the texts are one line each. `asked` says that the server was asked about them: for somebody who was
/// found, that a request is pending; for somebody who wants to connect, that an answer is on its way.
class ListedPerson {
    Q_GADGET
    QML_VALUE_TYPE(listedPerson)
    RECORD(ListedPerson, LISTED_PERSON)
};

/// What the server says of people, row by row: none is lost, whatever their keys.
QList<ListedPerson> listedPeople(const QList<QJsonObject> &records);

} // namespace orvane

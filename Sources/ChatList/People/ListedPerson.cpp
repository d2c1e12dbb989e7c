// SPDX-License-Identifier: MIT
#include "ChatList/People/ListedPerson.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Model/Words.h"

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

QString lineOf(const std::optional<QString> &text) {
    return asOneLine(text.value_or(QString()));
}

ListedPerson listedPerson(const QJsonObject &record) {
    ListedPerson person;
    person.userID = json::text(record, u"id").value_or(QString());
    person.id = person.userID.isEmpty() ? freshId() : person.userID;
    person.username = lineOf(json::text(record, u"username"));
    const auto displayName = json::text(record, u"display_name");
    person.name = displayName ? lineOf(displayName) : person.username;
    if (person.name.isEmpty())
        person.name = u"unknown"_s;
    person.status = lineOf(json::text(record, u"status").value_or(u"offline"_s));
    return person;
}

} // namespace

QList<ListedPerson> listedPeople(const QList<QJsonObject> &records) {
    QList<ListedPerson> people;
    people.reserve(records.size());
    for (const QJsonObject &record : records)
        people.append(listedPerson(record));
    return people;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Model/MessengerUser.h"

#include "Base/Json.h"

using namespace Qt::StringLiterals;

namespace orvane {

std::optional<MessengerUser> MessengerUser::fromContact(const QJsonObject &record) {
    const auto id = json::text(record, u"id");
    if (!id)
        return std::nullopt;
    MessengerUser user;
    user.id = *id;
    user.username = json::text(record, u"username");
    user.displayName = json::text(record, u"display_name").value_or(user.username.value_or(QString()));
    user.status = presenceOf(json::text(record, u"status").value_or(QString()));
    return user;
}

UserStatus presenceOf(const QString &status) {
    return status == "online"_L1 ? UserStatus::online : UserStatus::offline;
}

QString nameOf(const QString &userID, const Contacts &contacts, const QString &otherwise) {
    const auto user = contacts.constFind(userID);
    return user == contacts.constEnd() ? otherwise : user->displayName;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Application/AuthAnswer.h"

#include "Base/Json.h"

namespace orvane {

std::optional<AuthAnswer> AuthAnswer::parse(const QByteArray &body) {
    const auto top = json::readObject(body);
    const auto user = top ? json::object(*top, u"user") : std::nullopt;
    if (!user)
        return std::nullopt;
    const auto token = json::text(*top, u"token");
    const auto userId = json::integer(*user, u"id");
    const auto username = json::text(*user, u"username");
    if (!token || !userId || !username)
        return std::nullopt;
    const QJsonObject device = json::object(*top, u"device").value_or(QJsonObject());
    return AuthAnswer{.token = *token,
                      .userId = *userId,
                      .username = *username,
                      .displayName = json::text(*user, u"display_name").value_or(*username),
                      .deviceId = json::text(device, u"id").value_or(QString()),
                      .syncCursor = json::integer(*top, u"sync_cursor"),
                      .maxDevices = json::integer(*top, u"max_devices")};
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/SignIn.h"

#include "HomeServer/Accounts/Sessions.h"
#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Options.h"
#include "HomeServer/Security/HashQueue.h"
#include "HomeServer/Security/LoginThrottle.h"
#include "HomeServer/Security/Passwords.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 64;
constexpr qsizetype shortestPassword = 6;
constexpr qsizetype longestPassword = 1024;

Answer signedIn(Call &call, qint64 userId, const Device &device, int status) {
    rememberDevice(call, userId, device);
    const QByteArray token = issueToken(call, userId, device.id);
    Query user(call.database(), u"SELECT username, display_name FROM users WHERE id = ?"_s, {userId});
    user.next();
    return Answer(
        {{"token"_L1, QString::fromLatin1(token)},
         {"user"_L1,
          QJsonObject{{"id"_L1, userId}, {"username"_L1, user.text(0)}, {"display_name"_L1, user.text(1)}}},
         {"sync_cursor"_L1, syncCursor(call.database(), userId)},
         {"max_devices"_L1, maxDevices},
         {"device"_L1, QJsonObject{{"id"_L1, device.id}}}},
        status);
}

// The chat that a newcomer's invitation is for, where one is needed; refuses whoever may not come.
QString invitation(Call &call) {
    const Registration rule = call.services.options.registration;
    if (rule == Registration::Open)
        return {};
    Query row(call.database(), u"SELECT chat_id FROM invites WHERE code = ? AND expires_at > ?"_s,
              {fields::textOrEmpty(call.body, "invite_code"_L1), call.services.now()});
    if (rule == Registration::Closed || !row.next())
        throw Refusal(403, "registration_closed");
    return row.text(0);
}

Answer finishRegistration(Call &call, const NewUser &newcomer, const Device &device,
                          const QString &invitedTo) {
    const qint64 user = createUser(call, newcomer);
    welcome(call, user);
    if (!invitedTo.isEmpty())
        addMember(call, invitedTo, user);
    return signedIn(call, user, device, 201);
}

QFuture<Operation> registerAccount(Call &call) {
    const QString username = fields::text(call.body, "username"_L1, longestName);
    const QString password = fields::text(call.body, "password"_L1, longestPassword);
    QString shown = fields::textOrEmpty(call.body, "display_name"_L1, longestName);
    if (shown.isEmpty())
        shown = username;
    if (!isHonestUsername(username) || isReservedName(username) || !isShowable(shown) ||
        password.size() < shortestPassword)
        refuseBadRequest();
    const QString invitedTo = invitation(call);
    const Device device = deviceOf(call.body);
    return call.services.hashing.run([password] { return hashPassword(password); })
        .then([username, shown, device, invitedTo](const QString &hash) -> Operation {
            return [newcomer = NewUser{username, shown, hash}, device, invitedTo](Call &later) {
                return finishRegistration(later, newcomer, device, invitedTo);
            };
        });
}

Answer finishLogin(Call &call, bool verified, const QString &username, const Device &device) {
    const auto user = userNamed(call.database(), username);
    if (!verified || !user)
        throw Refusal(401, "invalid_credentials");
    call.services.throttle.succeeded(nameKey(username), call.request.address);
    return signedIn(call, *user, device, 200);
}

QFuture<Operation> login(Call &call) {
    const QString username = fields::text(call.body, "username"_L1);
    const QString password = fields::text(call.body, "password"_L1, longestPassword);
    const Device device = deviceOf(call.body);
    LoginThrottle &throttle = call.services.throttle;
    if (throttle.isClosed(nameKey(username), call.request.address, call.services.now()))
        throw Refusal(429, "too_many_attempts");
    // Counted before the slow check, so that many attempts at once do not slip through together.
    throttle.failed(nameKey(username), call.request.address, call.services.now());

    Query row(call.database(), u"SELECT password_hash FROM users WHERE username_key = ?"_s,
              {nameKey(username)});
    const QString hash = row.next() ? row.text(0) : QString();
    return call.services.hashing.run([password, hash] { return verifyPassword(password, hash); })
        .then([username, device](bool verified) -> Operation {
            return [verified, username, device](Call &later) {
                return finishLogin(later, verified, username, device);
            };
        });
}

} // namespace

void addSignIn(Router &router) {
    router.addSlow("POST", "/api/auth/register", registerAccount, Access::Open);
    router.addSlow("POST", "/api/auth/login", login, Access::Open);
}

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#pragma once

#include "Session/MessengerSession.h"
#include "Support/FaultySecretStore.h"

#include <QTemporaryDir>

namespace orvane {

using namespace Qt::StringLiterals;

/// A session over a store in memory and defaults in a temporary folder, signed in as user 7 with the token
/// "t0k".
struct SignedInSession {
    SignedInSession()
        : session(std::make_unique<FaultySecretStore>(signedIn()),
                  std::make_unique<UserDefaults>(folder.filePath(u"defaults.ini"_s))) {}

    QTemporaryDir folder;
    MessengerSession session;

private:
    static std::shared_ptr<StoredSecrets> signedIn() {
        auto secrets = std::make_shared<StoredSecrets>();
        secrets->items = {{u"auth_token"_s, "t0k"}, {u"auth_username"_s, "anna"}, {u"auth_user_id"_s, "7"}};
        return secrets;
    }
};

} // namespace orvane

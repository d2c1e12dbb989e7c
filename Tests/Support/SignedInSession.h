#pragma once

#include "Session/MessengerSession.h"
#include "Support/FaultySecretStore.h"

#include <QTemporaryDir>

namespace orvane {

/// A session over a store in memory and defaults in a temporary folder, signed in as user 7 with the token
/// "t0k".
struct SignedInSession {
    SignedInSession()
        : session(std::make_unique<FaultySecretStore>(signedIn()),
                  std::make_unique<UserDefaults>(folder.filePath(QStringLiteral("defaults.ini")))) {}

    QTemporaryDir folder;
    MessengerSession session;

private:
    static std::shared_ptr<StoredSecrets> signedIn() {
        auto secrets = std::make_shared<StoredSecrets>();
        secrets->items = {{QStringLiteral("auth_token"), "t0k"},
                          {QStringLiteral("auth_username"), "anna"},
                          {QStringLiteral("auth_user_id"), "7"}};
        return secrets;
    }
};

} // namespace orvane

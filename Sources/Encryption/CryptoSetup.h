// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/EncryptedFileStorage.h"
#include "Encryption/PreKeyManager.h"
#include "Session/MessengerSession.h"

#include <functional>

namespace orvane {

/// What the end-to-end layer does when somebody is signed in. Everything it names outlives the process's main
/// loop. Main thread.
struct CryptoSetup {
    MessengerSession &session;
    /// Made at their first use.
    std::function<MessengerCrypto &()> crypto = &MessengerCrypto::shared;
    std::function<PreKeyManager &()> preKeys = &PreKeyManager::shared;
    std::function<EncryptedFileStorage &()> storage = &EncryptedFileStorage::shared;
    std::function<void()> registerForRemoteNotifications;
    /// Milliseconds between two looks at how many keys the server has left.
    int replenishInterval = 1'800'000;

    /// Loads or makes the identity key, configures the storage, uploads pre-keys, and from then on looks at
    /// their number again and again, for as long as `timerOwner` lives. With the feature off, or nobody
    /// signed in, nothing happens. Each call adds a timer of its own.
    void setupCryptoAndPreKeys(bool enabled, QObject *timerOwner) const;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Encryption/CryptoSetup.h"

#include "Base/Task.h"

#include <QTimer>

namespace orvane {

void CryptoSetup::setupCryptoAndPreKeys(bool enabled, QObject *timerOwner) const {
    if (!enabled || !session.currentUserId.value())
        return;
    const QString userID = session.userIdText();
    MessengerCrypto &engine = crypto();
    engine.loadOrCreate();
    if (engine.idPriv())
        storage().configure(engine.idPriv()->publicKey());
    PreKeyManager &manager = preKeys();
    launch(manager.uploadIfNeeded(userID));
    auto *timer = new QTimer(timerOwner);
    QObject::connect(timer, &QTimer::timeout, timerOwner,
                     [&manager, userID] { launch(manager.replenishIfNeeded(userID)); });
    timer->start(replenishInterval);
    registerForRemoteNotifications();
}

} // namespace orvane

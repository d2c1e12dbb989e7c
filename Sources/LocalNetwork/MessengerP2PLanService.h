// SPDX-License-Identifier: MIT
#pragma once

#include "Base/NotificationCentre.h"
#include "Base/Observable.h"
#include "LocalNetwork/LanRules.h"
#include "LocalNetwork/MessengerP2PDataChannel.h"
#include "Platform/NetworkInterfaces.h"
#include "Platform/UserDefaults.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"

#include <QCoroTask>
#include <QList>
#include <QSet>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <memory>

namespace orvane {

/// Direct delivery on the local network, on or off. It tells the home server this machine's private address,
/// asks who else is there and has the channel dial them, at private addresses only; messages then need no
/// server. What arrives while it is on is posted as `orvaneP2PMessage`. Operations never throw: failures end
/// in `lastError`. Main thread.
///
///     off --enable--> on --disable--> off
///
/// After a restart `isEnabled` tells what was, and nothing runs until the next `enable`.
class MessengerP2PLanService : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one for the process.")
    OBSERVABLE(bool, isEnabled)
    /// Empty until it is first known; kept over `disable`.
    OBSERVABLE(QString, localIP)
    /// As the server last told it; kept over `disable` and restarts.
    OBSERVABLE(QString, subnet)
    /// As the server told them.
    OBSERVABLE(QList<QJsonObject>, peers)
    Q_PROPERTY(QSet<QString> linkedPeerIds READ linkedPeerIds NOTIFY linkedPeerIdsChanged)
    OBSERVABLE_OPTIONAL(QString, lastError)

public:
    /// What the service stands on; all but the defaults outlive it.
    struct Parts {
        MessengerSession &session;
        MessengerAPI &api;
        MessengerWebSocket &socket;
        MessengerP2PDataChannel &channel;
        const NetworkInterfaces &interfaces;
        std::unique_ptr<UserDefaults> defaults;
        std::chrono::milliseconds heartbeat{45'000};
        NotificationCentre &centre = NotificationCentre::shared();
        /// Which of the addresses that the server names are dialled.
        bool (*mayBeDialled)(const QString &host) = lan::mayBeDialled;
    };
    explicit MessengerP2PLanService(Parts parts);
    ~MessengerP2PLanService() override;

    static MessengerP2PLanService &shared();

    MessengerP2PDataChannel &dataChannel;

    /// The peers with whom a link is known: by a connection at the last refresh, or by what came from them
    /// since.
    const QSet<QString> &linkedPeerIds() const { return m_linkedPeerIds; }

    /// Enables or disables; done when that is.
    QCoro::Task<void> setEnabled(bool on);
    QCoro::Task<void> enable();
    /// The server hears of it in the background.
    void disable();
    QCoro::Task<void> refreshPeers();

Q_SIGNALS:
    void linkedPeerIdsChanged();

private:
    void wireDataChannel();
    void startHeartbeat();
    void subscribeSignaling();
    QCoro::Task<void> tick();
    std::optional<QString> detectLocalLANIP() const;
    void link(const QString &peerId);
    void dial(const QJsonObject &peer);

    Parts m_parts;
    QSet<QString> m_linkedPeerIds;
    std::unique_ptr<QTimer> heartbeatTimer;
    QMetaObject::Connection wsCancellable;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Support/SessionBus.h"

#include <QProcess>
#include <QString>

namespace orvane {

/// A session bus and a keyring daemon of their own, in the folders that OwnFolders made. This process's
/// session bus is that bus from `start()` on: once a process, since the bus of a process can't be changed
/// later.
class SecretServiceSession {
public:
    ~SecretServiceSession();

    /// Starts the bus and the daemon with an unlocked keyring. False when one of them did not come up.
    bool start();
    /// The daemon alone; it finds the keyring of the time before.
    bool startDaemon();
    /// Without a chance to say goodbye.
    void killDaemon();
    /// It hears and says nothing meanwhile.
    void pauseDaemon();
    void resumeDaemon();
    /// Locks the keyring that new items go to.
    void lock();
    void killBus() { m_bus.kill(); }
    /// The label of the item with these attributes, as other programs see it; null when there is none.
    QString labelOf(const QString &service, const QString &account) const;

private:
    SessionBus m_bus;
    QProcess m_daemon;
};

} // namespace orvane

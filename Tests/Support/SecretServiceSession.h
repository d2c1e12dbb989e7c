// SPDX-License-Identifier: MIT
#pragma once

#include "Support/SessionBus.h"

#include <QDBusConnectionInterface>

#include <csignal>
#include <gio/gio.h>

namespace orvane {

/// A session bus and a keyring daemon of their own, in the folders that OwnFolders made. This process's
/// session bus is that bus from `start()` on: once a process, since the bus of a process can't be changed
/// later.
class SecretServiceSession {
public:
    ~SecretServiceSession() { killDaemon(); }

    /// Starts the bus and the daemon with an unlocked keyring. False when one of them did not come up.
    bool start() {
        GDBusConnection *bus = m_bus.start() ? g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr) : nullptr;
        if (!bus)
            return false;
        // A process that loses its session bus ends by default; this one ends its bus itself.
        g_dbus_connection_set_exit_on_close(bus, FALSE);
        g_object_unref(bus);
        return startDaemon();
    }
    /// The daemon alone; it finds the keyring of the time before.
    bool startDaemon() {
        m_daemon.setProcessChannelMode(QProcess::MergedChannels);
        m_daemon.start("gnome-keyring-daemon",
                       {"--foreground", "--unlock", "--components=secrets",
                        "--control-directory=" + qEnvironmentVariable("XDG_RUNTIME_DIR") + "/keyring"});
        if (!m_daemon.waitForStarted(10'000))
            return false;
        m_daemon.write("known password");
        m_daemon.closeWriteChannel();
        const QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        for (int attempt = 0; attempt < 200 && !bus->isServiceRegistered("org.freedesktop.secrets");
             ++attempt)
            m_daemon.waitForFinished(50);
        return bus->isServiceRegistered("org.freedesktop.secrets");
    }
    /// Without a chance to say goodbye.
    void killDaemon() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    /// It hears and says nothing meanwhile.
    void pauseDaemon() { ::kill(pid_t(m_daemon.processId()), SIGSTOP); }
    void resumeDaemon() { ::kill(pid_t(m_daemon.processId()), SIGCONT); }
    void killBus() { m_bus.kill(); }

private:
    SessionBus m_bus;
    QProcess m_daemon;
};

} // namespace orvane

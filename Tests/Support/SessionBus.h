// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QProcess>

namespace orvane {

/// A message bus of its own, in the folders that OwnFolders made, on which nothing is ever activated. This
/// process's session bus is that bus from `start()` on: once a process, since the bus of a process can't be
/// changed later.
class SessionBus {
public:
    ~SessionBus() { kill(); }

    /// False when it did not come up.
    bool start() {
        const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
        QFile pattern(QUIET_BUS);
        QFile configuration(runtime + "/bus.conf");
        if (!pattern.open(QIODevice::ReadOnly) || !configuration.open(QIODevice::WriteOnly))
            return false;
        configuration.write(pattern.readAll().replace("{folder}", runtime));
        configuration.close();
        m_daemon.start("dbus-daemon",
                       {"--config-file=" + configuration.fileName(), "--nofork", "--print-address"});
        return m_daemon.waitForReadyRead(10'000) &&
               qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readAllStandardOutput().trimmed());
    }
    void kill() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

private:
    QProcess m_daemon;
};

} // namespace orvane

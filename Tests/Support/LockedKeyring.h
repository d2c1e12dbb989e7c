// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

namespace orvane {

/// A keyring on this process's session bus whose items are all locked.
class LockedKeyring {
public:
    ~LockedKeyring() { end(); }

    /// `items` is a JSON object of secrets by account. False when it did not come up.
    bool start(const QString &items) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start("/usr/bin/python3", {"-B", LOCKED_KEYRING, items});
        return says("ready\n", 20'000);
    }
    void end() {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    /// Whether its dialog has opened, after at most so long.
    bool asks(int milliseconds) { return says("asked\n", milliseconds); }
    /// With "open" or "dismiss".
    void answer(const QByteArray &word) {
        m_process.write(word + '\n');
        m_process.waitForBytesWritten();
    }

private:
    bool says(const char *line, int milliseconds) {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(milliseconds)) {
        }
        return m_process.canReadLine() && m_process.readLine() == line;
    }

    QProcess m_process;
};

} // namespace orvane

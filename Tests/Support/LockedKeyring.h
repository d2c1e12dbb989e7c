// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

namespace orvane {

/// A keyring on this process's session bus whose items are all locked.
class LockedKeyring {
public:
    ~LockedKeyring() { end(); }

    /// `items` is a JSON object of secrets by account. False when it did not come up.
    bool start(const QByteArray &items);
    void end();
    /// Whether its dialog has opened, after at most so long.
    bool asks(int milliseconds) { return says("asked\n", milliseconds); }
    /// With "open" or "dismiss".
    void answer(const QByteArray &word);

private:
    bool says(const char *line, int milliseconds);

    QProcess m_process;
};

} // namespace orvane

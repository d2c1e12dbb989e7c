// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

namespace orvane {

/// A message bus of its own, in the folders that OwnFolders made, on which nothing is ever activated. This
/// process's session bus is that bus from `start()` on: once a process, since the bus of a process can't be
/// changed later.
class SessionBus {
public:
    ~SessionBus() { kill(); }

    /// False when it did not come up.
    bool start();
    void kill();

private:
    QProcess m_daemon;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

namespace orvane {

/// Tells whether this machine has a way to others: a network beyond itself, whether or not a certain server
/// answers there. Main thread.
class PathMonitor : public QObject {
    Q_OBJECT

public:
    enum class Status { unsatisfied, satisfied };

    /// One update soon after this call, always, then one with each change. Once.
    virtual void start() = 0;

Q_SIGNALS:
    void pathUpdate(orvane::PathMonitor::Status status);
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane {

/// A mark on what stands for the program in the desktop. Main thread; nothing waits, and a failure goes
/// unnoticed.
class DockBadge {
public:
    virtual ~DockBadge() = default;

    /// `label` is the count as it fits on an icon; empty for no mark.
    virtual void show(qint64 count, const QString &label) = 0;

protected:
    DockBadge() = default;
    DockBadge(const DockBadge &) = default;
    DockBadge &operator=(const DockBadge &) = default;
};

} // namespace orvane

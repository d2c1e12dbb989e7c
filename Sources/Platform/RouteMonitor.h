// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/PathMonitor.h"

#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <set>

namespace orvane {

/// The path as the kernel's routing tables have it (rtnetlink): satisfied while a default route leads
/// somewhere. An update comes when the interfaces that such routes use have become others. Where the kernel
/// may not be asked, the path counts as satisfied.
class RouteMonitor : public PathMonitor {
public:
    /// A network that comes up changes many things at once; `settle` is how long it must have been quiet.
    explicit RouteMonitor(std::chrono::milliseconds settle = std::chrono::milliseconds(500));
    ~RouteMonitor() override;

    void start() override;

private:
    void skipNews();
    void look();

    QTimer m_settle;
    int m_socket = -1;
    std::unique_ptr<QSocketNotifier> m_news;
    bool m_reported = false;
    /// Numbers of the interfaces; absent where the kernel may not be asked.
    std::optional<std::set<int>> m_waysOut;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"

#include <QCoroTask>

#include <memory>

namespace orvane {

class MessengerChatView;

/// Fetches the latest page of a chat's history, which then replaces whatever the screen shows, and tells the
/// others that it was read. Where no history can be had, a sample conversation stands in. Main thread.
class HistoryLoader {
public:
    /// One page.
    static constexpr int pageSize = 50;

    explicit HistoryLoader(MessengerChatView &screen)
        : m_screen(screen) {}

    void load();

private:
    using Screen = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> show(Screen screen);
    static QCoro::Task<QList<MessengerMessage>> fetch(Screen screen);

    MessengerChatView &m_screen;
};

} // namespace orvane

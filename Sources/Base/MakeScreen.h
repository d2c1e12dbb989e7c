// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <memory>
#include <utility>

namespace orvane {

/// A screen model that its owner and its own tasks share. QML still looks at a screen while it is replaced,
/// so it dies by the event loop. Main thread.
template <typename Screen, typename... Arguments>
std::shared_ptr<Screen> makeScreen(Arguments &&...arguments) {
    return std::shared_ptr<Screen>(new Screen(std::forward<Arguments>(arguments)...),
                                   [](Screen *screen) { screen->deleteLater(); });
}

} // namespace orvane

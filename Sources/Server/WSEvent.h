// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace orvane {

/// One event of the server: its type and the whole object, `type` included.
struct WSEvent {
    QString type;
    QJsonObject data;

    /// Absent for a text frame that is no JSON object with a text `type`, and for "pong". Any thread.
    static std::optional<WSEvent> fromFrame(const QString &frame);
};

} // namespace orvane

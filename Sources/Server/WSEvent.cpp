// SPDX-License-Identifier: MIT
#include "Server/WSEvent.h"

#include "Base/Json.h"

using namespace Qt::StringLiterals;

namespace orvane {

std::optional<WSEvent> WSEvent::fromFrame(const QString &frame) {
    try {
        const auto object = json::parseObject(frame.toUtf8());
        const auto type = object ? json::text(*object, u"type") : std::nullopt;
        if (type && *type != "pong"_L1)
            return WSEvent{*type, *object};
    } catch (const JsonError &) {
        // Dropped on purpose: a frame that can't be read is nobody's.
    }
    return std::nullopt;
}

} // namespace orvane

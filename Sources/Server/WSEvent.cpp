// SPDX-License-Identifier: MIT
#include "Server/WSEvent.h"

#include "Base/Json.h"
#include "Server/EventNames.h"

using namespace Qt::StringLiterals;

namespace orvane {

std::optional<WSEvent> WSEvent::fromFrame(const QString &frame) {
    const auto object = json::readObject(frame.toUtf8());
    const auto type = object ? json::text(*object, u"type") : std::nullopt;
    if (!type || *type == eventname::pong)
        return std::nullopt;
    return WSEvent{*type, *object};
}

} // namespace orvane

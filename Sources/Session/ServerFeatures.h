// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QSet>

namespace orvane {

/// What a server may do beyond what every server does. Each is asked for at one place, by
/// `MessengerSession::offers`; where it is not announced, the client behaves as with any other server.
enum class ServerFeature {
    /// "assistant-contact": the assistant is somebody with an id like any other, and this username
    /// (`assistantUsername`).
    assistantContact,
};

inline constexpr auto assistantUsername = "ai_orvanetalk";

using ServerFeatures = QSet<ServerFeature>;

/// What the answer about the federation announces under `features`, a list of texts. Texts that nobody here
/// knows are passed over; anything else there, or a list beyond all reason, announces nothing. Pure.
ServerFeatures announcedFeatures(const QJsonObject &federation);

} // namespace orvane

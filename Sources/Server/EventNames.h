// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1StringView>

/// The types of the event socket's frames, in both directions.
namespace orvane::eventname {

using namespace Qt::StringLiterals;

// From the server.
inline constexpr auto message = "messenger_message"_L1;
inline constexpr auto messageEdited = "messenger_message_edited"_L1;
inline constexpr auto messageDeleted = "messenger_message_deleted"_L1;
inline constexpr auto reaction = "messenger_reaction"_L1;
inline constexpr auto readReceipt = "messenger_read_receipt"_L1;
inline constexpr auto typing = "typing"_L1;
inline constexpr auto userStatus = "user_status"_L1;
inline constexpr auto p2pSignal = "p2p_signal"_L1;
inline constexpr auto pong = "pong"_L1;

// To the server.
inline constexpr auto auth = "auth"_L1;
inline constexpr auto ping = "ping"_L1;
inline constexpr auto sendReadReceipt = "read_receipt"_L1;

// Both.
inline constexpr auto pollVote = "poll_vote"_L1;

} // namespace orvane::eventname

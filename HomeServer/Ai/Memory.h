// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

namespace orvane::homeserver {

// Answers a question from the person's chats: what was said about it, when, and where.
Answer askMemory(Call &call);

// Gathers what was said on a topic in different chats.
Answer discoverThread(Call &call);

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerChat.h"

/// Sample records, each made once at its first use. They stand in where the server gave no chats.
namespace orvane::MessengerMock {

const MessengerUser &currentUser();
const MessengerUser &aiAssistant();
/// Last messages are dated relative to the moment of first use.
const QList<MessengerChat> &sampleChats();

} // namespace orvane::MessengerMock

// SPDX-License-Identifier: MIT
#pragma once

#include "Server/MessengerAPI.h"

#include <QCoroTask>

#include <QJsonObject>
#include <QString>

namespace orvane {

/// Posts a message to a chat. Requests with the same key make one message. Throws what the transport throws,
/// and ApiError 500 for an answer without the message that the server made.
QCoro::Task<void> postMessage(MessengerAPI &api, QString chatID, QJsonObject body, QString idempotencyKey);

} // namespace orvane

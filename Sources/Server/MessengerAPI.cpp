// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Session/OrvaneTalkEndpoint.h"

namespace orvane {

MessengerAPI &MessengerAPI::shared() {
    static auto *api = new MessengerAPI(OrvaneTalkEndpoint::baseURL(), MessengerSession::shared());
    return *api;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"
#include "Session/MessengerSession.h"
#include "Support/FaultySecretStore.h"
#include "Support/RecordingSocketServer.h"
#include "Support/ScriptedHttpServer.h"

#include <QTemporaryDir>

namespace orvane {

using namespace Qt::StringLiterals;

/// What a screen stands on, connected to servers that follow a script. Nobody is signed in.
struct ClientParts {
    ScriptedHttpServer http;
    RecordingSocketServer events;
    QTemporaryDir folder;
    std::shared_ptr<StoredSecrets> secrets = std::make_shared<StoredSecrets>();
    MessengerSession session{std::make_unique<FaultySecretStore>(secrets),
                             std::make_unique<UserDefaults>(folder.filePath(u"defaults.ini"_s))};
    MessengerAPI api{http.base(), session};
    MessengerWebSocket socket{events.url(), {}};

    /// User 7 with the token "tok".
    void signIn() {
        session.token = u"tok"_s;
        session.currentUserId = 7;
        session.currentUsername = u"anna"_s;
        session.isLoggedIn = true;
    }

    /// Hands an event to whoever listens, as if it had arrived.
    void arrive(const QByteArray &frame) {
        const auto object = json::parseObject(frame);
        Q_ASSERT(object);
        Q_EMIT socket.events(WSEvent{json::text(*object, u"type").value_or(QString()), *object});
    }

    qsizetype requestsTo(const QByteArray &target) const {
        qsizetype found = 0;
        for (const RecordedRequest &request : http.requests())
            found += request.target == target;
        return found;
    }
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Chat/ChatParts.h"
#include "Server/HttpAnswer.h"
#include "Support/ClientParts.h"
#include "Support/RecordingNotifications.h"

#include <QCoreApplication>
#include <QNetworkReply>

namespace orvane {

using namespace Qt::StringLiterals;

/// What an open chat stands on, with nothing of it shared: the network never changes, nobody is linked
/// directly, and what is copied is written down.
struct OpenChatParts : ClientParts {
    class StillPath : public PathMonitor {
    public:
        void start() override {}
    };

    struct Engines {
        explicit Engines(ClientParts &parts)
            : store(parts.secrets)
            , queue(parts.folder.filePath(u"queue"_s), store, parts.api, std::make_unique<StillPath>())
            , channel(parts.session, 0, 0)
            , ai(parts.api, parts.http.base()) {}

        FaultySecretStore store;
        MessengerOfflineQueue queue;
        MessengerP2PDataChannel channel;
        MessengerAIService ai;
        NotificationCentre centre;
        QStringList copied;
    };

    // Tasks that still wait end while everything they stand on is there; one may ask for more before it ends.
    ~OpenChatParts() {
        const auto waiting = [] { return sharedNetwork().findChildren<QNetworkReply *>(); };
        for (auto replies = waiting(); !replies.isEmpty(); replies = waiting()) {
            for (QNetworkReply *reply : replies) {
                if (reply->isRunning())
                    reply->abort();
            }
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    std::shared_ptr<RecordingNotifications::Notes> notes = std::make_shared<RecordingNotifications::Notes>();
    ChatNotificationBridge notifications{std::make_unique<RecordingNotifications>(notes)};
    std::shared_ptr<Engines> engines = std::make_shared<Engines>(*this);
    MessengerOfflineQueue &queue = engines->queue;
    NotificationCentre &centre = engines->centre;

    ChatParts chatParts(const EndToEnd *encryption = nullptr) {
        return {.api = api,
                .socket = socket,
                .notifications = [this]() -> ChatNotificationBridge & { return notifications; },
                .queue = [held = engines]() -> MessengerOfflineQueue & { return held->queue; },
                .directChannel = [held = engines]() -> MessengerP2PDataChannel & { return held->channel; },
                .ai = [held = engines]() -> MessengerAIService & { return held->ai; },
                .encryption = encryption,
                .centre = centre,
                .setPasteboard = [held = engines](const QString &text) { held->copied.append(text); }};
    }
};

} // namespace orvane

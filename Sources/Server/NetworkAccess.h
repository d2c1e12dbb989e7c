// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkAccessManager>

namespace orvane {

/// Sends what acts at most once. A request with a body and without an "Idempotency-Key" is never repeated by
/// the network library when its connection ends unanswered; it fails instead. Such requests have a fresh
/// connection each, so that none meets one that the server is just giving up for its idleness. Main thread.
class NetworkAccess : public QNetworkAccessManager {
public:
    NetworkAccess();

protected:
    QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request,
                                 QIODevice *body) override;

private:
    struct FreshConnections : QNetworkAccessManager {
        using QNetworkAccessManager::createRequest;
        using QNetworkAccessManager::QNetworkAccessManager;
    } m_fresh{this};
};

} // namespace orvane

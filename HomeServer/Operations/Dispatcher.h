// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/HttpFront.h"
#include "HomeServer/Operations/Router.h"

#include <QObject>

namespace orvane::homeserver {

// Runs requests and frames: finds the row, checks the token and the acting user, reads the body, keeps one
// transaction per request, and turns refusals and faults into answers.
class Dispatcher : public QObject {
    Q_OBJECT

public:
    using Finish = std::function<void(const Answer &)>;

    Dispatcher(const Router &router, Services &services);

    // Looks at what stands before a request's body; refuses whoever may not send one.
    HttpFront::Admission admit(const Request &request) const;

    // Calls `finish` exactly once, now or later; never after this object is gone.
    void handle(const Request &request, const Finish &finish);

    // A frame of a type that nobody knows, or that is refused, is dropped.
    void handleFrame(const Caller &caller, const QJsonObject &frame);

private:
    Router::Match find(const Request &request) const;
    void start(const Request &request, const Finish &finish);
    void startSlow(const Route &route, const std::shared_ptr<Call> &call, const Finish &finish);

    const Router &m_router;
    Services &m_services;
};

} // namespace orvane::homeserver

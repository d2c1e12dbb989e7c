// SPDX-License-Identifier: MIT
#include "HomeServer/Operations/Dispatcher.h"

#include "HomeServer/Accounts/Sessions.h"
#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Http/Fields.h"

#include <QFutureWatcher>
#include <QJsonDocument>
#include <QLoggingCategory>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// The fixed ids of requests that do not say who acts.
constexpr qint64 nobody = 0;

// Runs `act` and gives the answer of whatever went wrong with it, if something did.
std::optional<Answer> guarded(const std::function<void()> &act) {
    try {
        act();
        return std::nullopt;
    } catch (const Refusal &refusal) {
        return refusal.answer();
    } catch (const std::exception &fault) {
        qWarning("a request failed: %s", fault.what());
        return Answer::error(500, "internal");
    }
}

bool isMultipart(const Request &request) {
    return request.contentType.toLower().startsWith("multipart/form-data");
}

QJsonObject readBody(const Request &request) {
    const bool bodyless = request.method == "GET" || request.method == "DELETE";
    if (isMultipart(request) || (bodyless && request.body.isEmpty()))
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    if (!document.isObject())
        throw Refusal(400, "bad_json");
    return document.object();
}

// The token alone says who acts; a request that names somebody else is a mistake or worse.
void checkActingUser(const Call &call, const QJsonValue &named) {
    if (named.isUndefined() || named.isNull())
        return;
    const auto user = fields::userId(named);
    if (!user)
        refuseBadRequest();
    if (*user != nobody && *user != call.caller.userId)
        refuseForbidden();
}

void checkActingUser(const Call &call) {
    checkActingUser(call, call.body.value("user_id"_L1));
    if (call.request.query.hasQueryItem(u"user_id"_s))
        checkActingUser(call, call.queryText("user_id"));
}

// Answers when what was done is on the disk.
void runOperation(const std::shared_ptr<Call> &call, const Operation &operation,
                  const Dispatcher::Finish &finish) {
    const auto answer = std::make_shared<Answer>();
    const auto act = [&] {
        *answer = operation(*call);
        if (call->caller.userId != 0)
            call->services.visitors.note(call->request.address, call->caller.userId, call->part("chat"),
                                         call->services.now());
    };
    const auto done = [answer, finish](bool committed) {
        finish(committed ? *answer : Answer::error(500, "internal"));
    };
    if (const auto failed = guarded([&] { call->run(act, done); }))
        finish(*failed);
}

} // namespace

Dispatcher::Dispatcher(const Router &router, Services &services)
    : m_router(router)
    , m_services(services) {}

HttpFront::Admission Dispatcher::admit(const Request &request) const {
    const Route &route = *find(request).route;
    const bool member = callerOf(m_services, request.token).has_value();
    if (route.access == Access::SignedIn && !member)
        throw Refusal(401, "unauthorized");
    if (route.carriesFile && !member &&
        !m_services.visitors.isMembersAddress(request.address, m_services.now()))
        refuseForbidden();
    return {route.carriesFile ? HttpFront::maxUpload : HttpFront::maxBody, member};
}

Router::Match Dispatcher::find(const Request &request) const {
    Router::Match match = m_router.find(request.method, request.segments);
    if (!match.route)
        throw match.pathKnown ? Refusal(405, "method_not_allowed") : Refusal(404, "not_found");
    return match;
}

void Dispatcher::handle(const Request &request, const Finish &finish) {
    if (const auto failed = guarded([&] { start(request, finish); }))
        finish(*failed);
}

void Dispatcher::start(const Request &request, const Finish &finish) {
    const Router::Match match = find(request);
    const auto call = std::make_shared<Call>(m_services);
    call->request = request;
    call->parts = match.parts;
    if (match.route->access == Access::SignedIn) {
        const auto caller = callerOf(m_services, request.token);
        if (!caller)
            throw Refusal(401, "unauthorized");
        call->caller = *caller;
    }
    call->body = readBody(request);
    if (match.route->access == Access::SignedIn)
        checkActingUser(*call);

    if (match.route->slowOperation)
        startSlow(*match.route, call, finish);
    else
        runOperation(call, match.route->operation, finish);
}

void Dispatcher::startSlow(const Route &route, const std::shared_ptr<Call> &call, const Finish &finish) {
    const QFuture<Operation> future = route.slowOperation(*call);
    // Owned by this object, so that what ends after the server has stopped finds nobody to tell.
    auto *watcher = new QFutureWatcher<Operation>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [watcher, call, finish] {
        watcher->deleteLater();
        Operation second;
        if (const auto failed = guarded([&] { second = watcher->result(); }))
            finish(*failed);
        else
            runOperation(call, second, finish);
    });
    watcher->setFuture(future);
}

void Dispatcher::handleFrame(const Caller &caller, const QJsonObject &frame) {
    const Operation *operation = m_router.frame(frame.value("type"_L1).toString());
    if (!operation)
        return;
    Call call(m_services);
    call.caller = caller;
    call.body = frame;
    guarded([&] {
        checkActingUser(call, frame.value("user_id"_L1));
        call.run([&] { (*operation)(call); });
    });
}

} // namespace orvane::homeserver

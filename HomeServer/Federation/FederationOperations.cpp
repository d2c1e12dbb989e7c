// SPDX-License-Identifier: MIT
#include "HomeServer/Federation/FederationOperations.h"

#include "HomeServer/Federation/OutwardRequest.h"
#include "HomeServer/Federation/ServerName.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Options.h"
#include "HomeServer/Store/Query.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPromise>
#include <QRegularExpression>
#include <QUrl>

#include <memory>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr int pingTimeout = 3000; // ms

Answer info(Call &call) {
    const QString domain = serverName(call.database());
    Query user(call.database(), u"SELECT username FROM users WHERE id = ?"_s, {call.caller.userId});
    user.next();
    // Nothing leaves this server yet: all that was written to remote people waits.
    const qint64 pending = integerOf(call.database(),
                                     u"SELECT count(*) FROM messages m JOIN chats c ON c.id = m.chat_id "
                                     "WHERE c.federated = 1 AND m.sender_id = ?"_s,
                                     {call.caller.userId});
    return Answer({{"matrix_id"_L1, u"@%1:%2"_s.arg(user.text(0), domain)},
                   {"domain"_L1, domain},
                   {"outbox_pending"_L1, pending},
                   {"features"_L1, QJsonArray::fromStringList(call.services.features)}});
}

// A domain as it stands, or the one in a federated id like "@user:domain".
QString domainIn(const QString &text) {
    static const QRegularExpression domain(u"^[a-z0-9]([a-z0-9.-]*[a-z0-9])?(:[0-9]{1,5})?$"_s);
    const QString lower = text.trimmed().toLower();
    const QString found = lower.startsWith(u'@') ? lower.section(u':', 1) : lower;
    if (!domain.match(found).hasMatch())
        refuseBadRequest();
    return found;
}

Answer listPeers(Call &call) {
    QJsonArray peers;
    Query rows(call.database(),
               u"SELECT domain, base_url, status FROM peers WHERE user_id = ? ORDER BY domain"_s,
               {call.caller.userId});
    while (rows.next())
        peers.append(QJsonObject{
            {"domain"_L1, rows.text(0)}, {"base_url"_L1, rows.text(1)}, {"status"_L1, rows.text(2)}});
    return Answer({{"peers"_L1, peers}});
}

// Scheme, host and port alone: a path would be one of somebody else's choosing.
QString serverAddress(const QJsonObject &body) {
    const QUrl url(fields::webAddress(body, "base_url"_L1), QUrl::StrictMode);
    if (url.isEmpty() || !url.userInfo().isEmpty())
        refuseBadRequest();
    return url.toString(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

Answer addPeer(Call &call) {
    const QString base = serverAddress(call.body);
    execute(call.database(),
            u"INSERT INTO peers(user_id, domain, base_url) VALUES (?, ?, ?) "
            "ON CONFLICT DO UPDATE SET base_url = excluded.base_url, status = 'unknown'"_s,
            {call.caller.userId, domainIn(fields::text(call.body, "domain"_L1)), base});
    return Answer({{"status"_L1, "added"_L1}}, 201);
}

QString baseUrlOf(Call &call, const QString &domain) {
    Query row(call.database(), u"SELECT base_url FROM peers WHERE user_id = ? AND domain = ?"_s,
              {call.caller.userId, domain});
    return row.next() ? row.text(0) : QString();
}

Answer discoverPeer(Call &call) {
    const QString domain = domainIn(fields::text(call.body, "domain"_L1));
    QJsonObject answer{{"domain"_L1, domain}};
    const QString known =
        domain == serverName(call.database()) ? call.services.httpBase() : baseUrlOf(call, domain);
    if (!known.isEmpty())
        answer["base_url"_L1] = known;
    return Answer(answer);
}

Answer notePing(Call &call, const QString &domain, bool answered) {
    const QString status = answered ? u"online"_s : u"offline"_s;
    execute(call.database(), u"UPDATE peers SET status = ? WHERE user_id = ? AND domain = ?"_s,
            {status, call.caller.userId, domain});
    return Answer({{"domain"_L1, domain}, {"status"_L1, status}});
}

// Whatever the peer answers, it is there; only what it answers about is none of the caller's business.
QFuture<Operation> pingPeer(Call &call) {
    const QString domain = domainIn(call.part("domain"));
    const QString base = baseUrlOf(call, domain);
    if (base.isEmpty())
        refuseNotFound();
    auto promise = std::make_shared<QPromise<Operation>>();
    promise->start();
    const auto finish = [promise, domain](bool answered) {
        promise->addResult([domain, answered](Call &later) { return notePing(later, domain, answered); });
        promise->finish();
    };
    QNetworkAccessManager &network = call.services.network;
    const Reach reach = call.services.options.allowLocalPeers ? Reach::Anywhere : Reach::PublicOnly;
    prepareOutward(QUrl(base), reach, &network, [&network, finish](std::optional<QNetworkRequest> request) {
        if (!request) {
            finish(false);
            return;
        }
        request->setTransferTimeout(pingTimeout);
        QNetworkReply *reply = network.head(*request);
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply, finish] {
            finish(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid());
            reply->deleteLater();
        });
    });
    return promise->future();
}

} // namespace

void addFederation(Router &router) {
    router.add("GET", "federation/peers", listPeers);
    router.add("POST", "federation/peers", addPeer);
    router.add("POST", "federation/peers/discover", discoverPeer);
    router.addSlow("POST", "federation/peers/{domain}/ping", pingPeer);
    router.add("GET", "federation/info", info);
}

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// Other servers, and clients on the same network.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

QCoro::Task<QList<QJsonObject>> MessengerAPI::listFederationPeers() {
    return listUnder(get(messenger(u"/federation/peers")), u"peers"_s);
}

QCoro::Task<void> MessengerAPI::addFederationPeer(const QString &domain, const QString &baseURL) {
    return none(post(messenger(u"/federation/peers"), {{u"domain"_s, domain}, {u"base_url"_s, baseURL}}));
}

QCoro::Task<QJsonObject> MessengerAPI::pingFederationPeer(const QString &domain) {
    return mapOrEmpty(post(messenger(u"/federation/peers/%1/ping", domain), {}));
}

QCoro::Task<QJsonObject> MessengerAPI::discoverFederationPeer(const QString &domain) {
    return mapOrEmpty(
        post(messenger(u"/federation/peers/discover"), {{u"domain"_s, domain}, {u"mx_id"_s, domain}}));
}

QCoro::Task<QJsonObject> MessengerAPI::registerP2P(const QString &localIP) {
    return mapOrEmpty(post(messenger(u"/p2p/register"),
                           {{u"local_ip"_s, localIP}, {u"device_id"_s, session().deviceId.value()}}));
}

QCoro::Task<QJsonObject> MessengerAPI::discoverP2P(const std::optional<QString> &subnet) {
    QString path = messenger(u"/p2p/discover");
    if (subnet && !subnet->isEmpty())
        path += u"?subnet="_s + *subnet;
    return mapOrEmpty(get(path));
}

} // namespace orvane

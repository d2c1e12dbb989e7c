// SPDX-License-Identifier: MIT
#include "HomeServer/Federation/OutwardRequest.h"

#include <QHostInfo>
#include <QObject>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

struct Network {
    const char *address;
    int bits;
};

constexpr Network reservedFour[] = {
    {"0.0.0.0", 8},     {"10.0.0.0", 8},      {"100.64.0.0", 10},  {"127.0.0.0", 8},    {"169.254.0.0", 16},
    {"172.16.0.0", 12}, {"192.0.0.0", 24},    {"192.0.2.0", 24},   {"192.88.99.0", 24}, {"192.168.0.0", 16},
    {"198.18.0.0", 15}, {"198.51.100.0", 24}, {"203.0.113.0", 24}, {"224.0.0.0", 3},
};

// Within the global unicast addresses: protocol assignments with Teredo, documentation, 6to4.
constexpr Network reservedSix[] = {{"2001::", 23}, {"2001:db8::", 32}, {"2002::", 16}, {"3fff::", 20}};

template <typename Networks>
bool isIn(const QHostAddress &address, const Networks &networks) {
    return std::ranges::any_of(networks, [&](const Network &network) {
        return address.isInSubnet(QHostAddress(QString::fromLatin1(network.address)), network.bits);
    });
}

QNetworkRequest requestTo(const QUrl &named, const QHostAddress &address) {
    QUrl url;
    url.setScheme(named.scheme());
    url.setHost(address.toString());
    url.setPort(named.port());
    url.setPath(u"/"_s);
    QNetworkRequest request(url);
    const QString port = named.port() < 0 ? QString() : u":%1"_s.arg(named.port());
    request.setRawHeader("Host", (named.host(QUrl::FullyEncoded) + port).toLatin1());
    request.setPeerVerifyName(named.host(QUrl::FullyEncoded));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    return request;
}

} // namespace

bool isPublic(const QHostAddress &address) {
    bool four = false;
    const quint32 inside = address.toIPv4Address(&four);
    if (four)
        return !isIn(QHostAddress(inside), reservedFour);
    return address.isInSubnet(QHostAddress(u"2000::"_s), 3) && !isIn(address, reservedSix);
}

void prepareOutward(const QUrl &url, Reach reach, QObject *context,
                    const std::function<void(const std::optional<QNetworkRequest> &)> &then) {
    QHostInfo::lookupHost(url.host(QUrl::FullyEncoded), context, [url, reach, then](const QHostInfo &found) {
        for (const QHostAddress &address : found.addresses()) {
            if (reach == Reach::Anywhere || isPublic(address)) {
                then(requestTo(url, address));
                return;
            }
        }
        then(std::nullopt);
    });
}

} // namespace orvane::homeserver

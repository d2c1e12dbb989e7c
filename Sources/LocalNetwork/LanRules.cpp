// SPDX-License-Identifier: MIT
#include "LocalNetwork/LanRules.h"

#include <QHostAddress>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::lan {

bool isPrivateLAN(const QString &ip) {
    QList<qint64> numbers;
    const QStringList pieces = ip.split(u'.', Qt::SkipEmptyParts);
    for (const QString &piece : pieces) {
        bool isNumber = false;
        const qint64 number = piece.toLongLong(&isNumber);
        if (isNumber)
            numbers.append(number);
    }
    if (numbers.size() != 4)
        return false;
    const qint64 first = numbers.at(0);
    const qint64 second = numbers.at(1);
    return first == 10 || (first == 192 && second == 168) || (first == 172 && second >= 16 && second <= 31);
}

std::optional<QString> localLANIP(const QList<InterfaceAddress> &addresses) {
    for (const InterfaceAddress &entry : addresses)
        if (entry.interfaceName.startsWith("en"_L1) && isPrivateLAN(entry.address))
            return entry.address;
    return std::nullopt;
}

bool mayBeDialled(const QString &host) {
    static const auto ranges = {QHostAddress::parseSubnet(u"10.0.0.0/8"_s),
                                QHostAddress::parseSubnet(u"172.16.0.0/12"_s),
                                QHostAddress::parseSubnet(u"192.168.0.0/16"_s)};
    const QHostAddress address(host);
    // Short and hexadecimal forms are read as well, but not written.
    return address.toString() == host &&
           std::ranges::any_of(ranges, [&](const auto &range) { return address.isInSubnet(range); });
}

bool dials(const QString &ownId, const QString &peerId) {
    return ownId < peerId;
}

} // namespace orvane::lan

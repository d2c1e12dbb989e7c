// SPDX-License-Identifier: MIT
#include "Platform/NetworkInterfaces.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <memory>
#include <optional>

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto hardware = u"en"_s;

// Absent for an interface that is only software.
std::optional<QString> reportedName(const QString &label) {
    if (label.startsWith(hardware))
        return label;
    // A second address may have a label of its own, "eth0:1".
    const QString device = u"/sys/class/net/%1/device"_s.arg(label.section(u':', 0, 0));
    return QFileInfo::exists(device) ? std::optional(hardware + label) : std::nullopt;
}

std::optional<QString> numeric(const sockaddr &address) {
    std::array<char, NI_MAXHOST> host{};
    if (getnameinfo(&address, sizeof(sockaddr_in), host.data(), host.size(), nullptr, 0, NI_NUMERICHOST) != 0)
        return std::nullopt;
    return QString::fromLatin1(host.data());
}

} // namespace

QList<InterfaceAddress> LinuxNetworkInterfaces::ipv4Addresses() const {
    ifaddrs *first = nullptr;
    if (getifaddrs(&first) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
    QList<InterfaceAddress> result;
    for (const ifaddrs *entry = first; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        const auto name = reportedName(QFile::decodeName(entry->ifa_name));
        const auto address = numeric(*entry->ifa_addr);
        if (name && address)
            result.append({*name, *address});
    }
    return result;
}

} // namespace orvane

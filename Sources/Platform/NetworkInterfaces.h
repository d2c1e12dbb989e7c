// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

namespace orvane {

/// An IPv4 address in its dotted form, and the interface that has it.
struct InterfaceAddress {
    QString interfaceName;
    QString address;

    bool operator==(const InterfaceAddress &) const = default;
};

/// The addresses of this machine at the moment of asking. Main thread; nothing waits.
class NetworkInterfaces {
public:
    virtual ~NetworkInterfaces() = default;

    /// In the system's order; none where it can't tell. The names of interfaces with hardware behind them
    /// begin with "en".
    virtual QList<InterfaceAddress> ipv4Addresses() const = 0;

protected:
    NetworkInterfaces() = default;
    NetworkInterfaces(const NetworkInterfaces &) = default;
    NetworkInterfaces &operator=(const NetworkInterfaces &) = default;
};

/// Of the kernel. An interface whose name begins with "en" keeps it; another one with a device, such as
/// "wlan0", gets "en" in front; bridges, tunnels, containers' ends and loopback are left out.
class LinuxNetworkInterfaces : public NetworkInterfaces {
public:
    QList<InterfaceAddress> ipv4Addresses() const override;
};

} // namespace orvane

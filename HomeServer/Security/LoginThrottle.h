// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QString>

namespace orvane::homeserver {

// Counts failed logins of one name from one address. Five within a minute close the door until the oldest
// of them is a minute old. Lives in memory only; times are Unix seconds given by the caller.
class LoginThrottle {
public:
    bool isClosed(const QString &username, const QHostAddress &address, double now);
    void failed(const QString &username, const QHostAddress &address, double now);
    void succeeded(const QString &username, const QHostAddress &address);

private:
    using Key = std::pair<QString, QHostAddress>;

    void forgetOld(double now);

    QHash<Key, QList<double>> m_failures;
};

} // namespace orvane::homeserver

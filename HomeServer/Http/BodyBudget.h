// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QHostAddress>

namespace orvane::homeserver {

// How many bytes of requests may be in memory that haven't come to their end, over all connections and for
// one address.
class BodyBudget {
public:
    BodyBudget(qint64 inAll, qint64 perAddress)
        : m_inAll(inAll)
        , m_perAddress(perAddress) {}

    // False, and nothing taken, when there is no room.
    bool take(const QHostAddress &address, qint64 bytes) {
        if (m_taken + bytes > m_inAll || m_byAddress.value(address) + bytes > m_perAddress)
            return false;
        m_taken += bytes;
        m_byAddress[address] += bytes;
        return true;
    }

    void giveBack(const QHostAddress &address, qint64 bytes) {
        m_taken -= bytes;
        const auto entry = m_byAddress.find(address);
        if (entry == m_byAddress.end())
            return;
        *entry -= bytes;
        if (*entry <= 0)
            m_byAddress.erase(entry);
    }

private:
    qint64 m_inAll;
    qint64 m_perAddress;
    qint64 m_taken = 0;
    QHash<QHostAddress, qint64> m_byAddress;
};

} // namespace orvane::homeserver

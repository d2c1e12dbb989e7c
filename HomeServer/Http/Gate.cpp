// SPDX-License-Identifier: MIT
#include "HomeServer/Http/Gate.h"

#include <QTimer>

#include <algorithm>
#include <sys/resource.h>

namespace orvane::homeserver {

namespace {

constexpr int backlog = 1024;
constexpr int pauseMilliseconds = 1000;
constexpr int otherDescriptors = 40; // of the whole program: database, uploads, requests of its own

// One port's half of what the process may have open. Running out altogether must not happen: Qt's listener
// takes the error for a passing one and tries again without end.
int mostDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur > 1'000'000)
        return 500'000;
    return std::max(1, (static_cast<int>(limit.rlim_cur) - otherDescriptors) / 2);
}

} // namespace

Gate::Gate(const GateBounds &bounds, QObject *parent)
    : QTcpServer(parent)
    , m_bounds(bounds) {
    m_bounds.inAll = std::min(m_bounds.inAll, mostDescriptors());
    setListenBacklogSize(backlog);
    connect(this, &QTcpServer::acceptError, this, [this] {
        pauseAccepting();
        QTimer::singleShot(pauseMilliseconds, this, &QTcpServer::resumeAccepting);
    });
}

void Gate::incomingConnection(qintptr descriptor) {
    auto *socket = new QTcpSocket;
    if (!socket->setSocketDescriptor(descriptor) || !makeRoom(socket->peerAddress())) {
        socket->abort();
        delete socket;
        return;
    }
    m_guests.append({socket, socket->peerAddress(), false});
    ++m_byAddress[socket->peerAddress()];
    connect(socket, &QAbstractSocket::disconnected, this, [this, socket] { forget(socket); });
    connect(socket, &QObject::destroyed, this, [this, socket] { forget(socket); });
    Q_EMIT arrived(socket);
}

bool Gate::makeRoom(const QHostAddress &address) {
    const bool proxy = m_bounds.proxies.contains(address);
    if (!proxy && m_byAddress.value(address) >= m_bounds.perAddress && !dropOldest(&address))
        return false;
    return m_guests.size() < m_bounds.inAll || dropOldest(nullptr);
}

bool Gate::dropOldest(const QHostAddress *address) {
    const auto found = std::ranges::find_if(m_guests, [&](const Guest &guest) {
        return !guest.trusted && (!address || guest.address == *address);
    });
    if (found == m_guests.end())
        return false;
    QTcpSocket *socket = found->socket;
    forget(socket);
    socket->abort();
    return true;
}

void Gate::forget(const QTcpSocket *socket) {
    const auto found =
        std::ranges::find_if(m_guests, [&](const Guest &guest) { return guest.socket == socket; });
    if (found == m_guests.end())
        return;
    if (--m_byAddress[found->address] <= 0)
        m_byAddress.remove(found->address);
    m_guests.erase(found);
}

void Gate::trust(const QTcpSocket *socket) {
    const auto found =
        std::ranges::find_if(m_guests, [&](const Guest &guest) { return guest.socket == socket; });
    if (found != m_guests.end())
        found->trusted = true;
}

void Gate::closeAll() {
    for (const Guest &guest : std::exchange(m_guests, {}))
        guest.socket->abort();
    m_byAddress.clear();
}

} // namespace orvane::homeserver

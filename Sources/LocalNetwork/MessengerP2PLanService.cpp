// SPDX-License-Identifier: MIT
#include "LocalNetwork/MessengerP2PLanService.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "LocalNetwork/DirectMessages.h"
#include "Server/EventNames.h"

#include <QPointer>

#include <utility>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

const auto enabledKey = u"ot_p2p_enabled"_s;
const auto subnetKey = u"ot_p2p_subnet"_s;
const auto yes = u"true"_s;

} // namespace

MessengerP2PLanService::MessengerP2PLanService(Parts parts)
    : dataChannel(parts.channel)
    , m_parts(std::move(parts)) {
    isEnabled = m_parts.defaults->text(enabledKey) == yes;
    subnet = m_parts.defaults->text(subnetKey).value_or(QString());
    wireDataChannel();
}

MessengerP2PLanService::~MessengerP2PLanService() {
    dataChannel.onMessage = nullptr;
}

MessengerP2PLanService &MessengerP2PLanService::shared() {
    static const LinuxNetworkInterfaces interfaces;
    static auto *service = new MessengerP2PLanService(
        {MessengerSession::shared(), MessengerAPI::shared(), MessengerWebSocket::shared(),
         MessengerP2PDataChannel::shared(), interfaces, std::make_unique<UserDefaults>()});
    return *service;
}

QCoro::Task<void> MessengerP2PLanService::setEnabled(bool on) {
    if (on)
        co_await enable();
    else
        disable();
}

QCoro::Task<void> MessengerP2PLanService::enable() {
    const QPointer<MessengerP2PLanService> self(this);
    lastError = std::nullopt;
    const auto address = detectLocalLANIP();
    if (!address) {
        lastError = u"LAN IP не найден (нужен Wi‑Fi: 192.168.x.x / 10.x.x.x)"_s;
        isEnabled = false;
        co_return;
    }
    localIP = *address;
    QJsonObject answer;
    std::optional<QString> failure;
    try {
        answer = co_await m_parts.api.registerP2P(*address);
    } catch (const std::exception &error) {
        failure = localizedDescription(error);
    }
    if (!self)
        co_return;
    if (failure) {
        lastError = failure;
        isEnabled = false;
        co_return;
    }
    subnet = json::text(answer, u"subnet").value_or(QString());
    isEnabled = true;
    m_parts.defaults->set(enabledKey, yes);
    m_parts.defaults->set(subnetKey, subnet.value());
    dataChannel.start();
    startHeartbeat();
    subscribeSignaling();
    co_await refreshPeers();
}

void MessengerP2PLanService::disable() {
    heartbeatTimer.reset();
    disconnect(wsCancellable);
    dataChannel.stop();
    isEnabled = false;
    peers = QList<QJsonObject>();
    m_linkedPeerIds.clear();
    Q_EMIT linkedPeerIdsChanged();
    m_parts.defaults->remove(enabledKey);
    launch(dropped(m_parts.api.del(u"/api/messenger/p2p/register"_s, {}),
                   "the server forgets whoever does not report"));
}

QCoro::Task<void> MessengerP2PLanService::refreshPeers() {
    const QPointer<MessengerP2PLanService> self(this);
    if (!isEnabled)
        co_return;
    const std::optional<QString> known(subnet.value());
    QJsonObject answer;
    std::optional<QString> failure;
    try {
        answer = co_await m_parts.api.discoverP2P(known);
    } catch (const std::exception &error) {
        failure = localizedDescription(error);
    }
    // Switched off meanwhile: nothing may be dialled any more.
    if (!self || !isEnabled)
        co_return;
    if (failure) {
        lastError = failure;
        co_return;
    }
    peers = json::objects(answer, u"peers");
    if (const auto told = json::text(answer, u"subnet"); told && !told->isEmpty())
        subnet = *told;
    m_linkedPeerIds = dataChannel.connectedPeerIds();
    Q_EMIT linkedPeerIdsChanged();
    const QList<QJsonObject> present = peers;
    for (const QJsonObject &peer : present)
        dial(peer);
}

// A connection that is there already is the channel's to know.
void MessengerP2PLanService::dial(const QJsonObject &peer) {
    const auto peerId = json::text(peer, u"user_id");
    const auto host = json::text(peer, u"local_ip");
    if (peerId && host && m_parts.mayBeDialled(*host) && lan::dials(m_parts.session.userIdText(), *peerId))
        dataChannel.connect(*peerId, *host);
}

void MessengerP2PLanService::wireDataChannel() {
    dataChannel.onMessage = [this](const QString &peerId, const QString &chatId, const QJsonObject &message) {
        // A connection that never said who it is outlives the channel's stop.
        if (!isEnabled)
            return;
        link(peerId);
        m_parts.centre.post(orvaneP2PMessage,
                            {{u"peer_id"_s, peerId}, {u"chat_id"_s, chatId}, {u"message"_s, message}});
    };
}

void MessengerP2PLanService::startHeartbeat() {
    heartbeatTimer = std::make_unique<QTimer>();
    connect(heartbeatTimer.get(), &QTimer::timeout, this, [this] { launch(tick()); });
    heartbeatTimer->start(m_parts.heartbeat);
}

QCoro::Task<void> MessengerP2PLanService::tick() {
    const QPointer<MessengerP2PLanService> self(this);
    if (!isEnabled)
        co_return;
    if (const auto address = detectLocalLANIP()) {
        localIP = *address;
        co_await dropped(m_parts.api.registerP2P(*address), "the next tick tries again");
    }
    if (self)
        co_await refreshPeers();
}

void MessengerP2PLanService::subscribeSignaling() {
    disconnect(wsCancellable);
    wsCancellable = connect(&m_parts.socket, &MessengerWebSocket::events, this, [this](const WSEvent &event) {
        if (event.type != eventname::p2pSignal)
            return;
        const auto from = json::text(event.data, u"from");
        const QString kind = json::text(event.data, u"signal_type").value_or(QString());
        if (from && (kind == u"offer"_s || kind == u"answer"_s))
            link(*from);
    });
}

std::optional<QString> MessengerP2PLanService::detectLocalLANIP() const {
    return lan::localLANIP(m_parts.interfaces.ipv4Addresses());
}

void MessengerP2PLanService::link(const QString &peerId) {
    if (m_linkedPeerIds.contains(peerId))
        return;
    m_linkedPeerIds.insert(peerId);
    Q_EMIT linkedPeerIdsChanged();
}

} // namespace orvane

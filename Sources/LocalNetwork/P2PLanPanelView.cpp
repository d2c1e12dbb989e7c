// SPDX-License-Identifier: MIT
#include "LocalNetwork/P2PLanPanelView.h"

#include "Base/Json.h"
#include "Base/Task.h"

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

// More than fits into the widest row, and little enough to lay out at once.
constexpr int rowLength = 200;

LanPeer rowOf(const QJsonObject &peer, const QSet<QString> &linked) {
    const auto id = json::text(peer, u"user_id");
    const bool isLinked = id && linked.contains(*id);
    const bool isOnline = json::boolean(peer, u"online").value_or(false);
    LanPeer row;
    row.id = id.value_or(QString());
    row.name = json::text(peer, u"display_name").value_or(u"Peer"_s).left(rowLength);
    row.address = json::text(peer, u"local_ip").value_or(QString()).left(rowLength);
    row.status = isLinked ? u"🔗 связан"_s : isOnline ? u"🟢 online"_s : u"⚪ offline"_s;
    row.reachable = isLinked || isOnline;
    return row;
}

} // namespace

P2PLanPanelView::P2PLanPanelView(MessengerP2PLanService &service)
    : m_service(service)
    , m_peers(service.peers.addNotifier([this] { showPeers(); })) {
    connect(&service, &MessengerP2PLanService::linkedPeerIdsChanged, this, &P2PLanPanelView::showPeers);
    connect(&service.dataChannel, &MessengerP2PDataChannel::connectedPeerIdsChanged, this,
            &P2PLanPanelView::countLinks);
    showPeers();
    countLinks();
}

void P2PLanPanelView::appear() {
    if (m_service.isEnabled)
        refreshPeers();
}

void P2PLanPanelView::setEnabled(bool on) {
    launch(follow(shared_from_this(), m_service.setEnabled(on)));
}

void P2PLanPanelView::refreshPeers() {
    launch(follow(shared_from_this(), m_service.refreshPeers()));
}

QCoro::Task<void> P2PLanPanelView::follow(std::shared_ptr<P2PLanPanelView> self, QCoro::Task<void> task) {
    self->running = self->running + 1;
    co_await task;
    self->running = self->running - 1;
}

void P2PLanPanelView::showPeers() {
    const QList<QJsonObject> present = m_service.peers;
    QList<LanPeer> rows;
    rows.reserve(present.size());
    for (const QJsonObject &peer : present)
        rows.append(rowOf(peer, m_service.linkedPeerIds()));
    peers.assign(rows);
}

void P2PLanPanelView::countLinks() {
    linkCount = int(m_service.dataChannel.connectedPeerIds().size());
}

} // namespace orvane

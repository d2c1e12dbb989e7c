// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "LocalNetwork/LanPeer.h"
#include "LocalNetwork/MessengerP2PLanService.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The sheet of direct delivery: its switch, and who else is on this network. Main thread.
class P2PLanPanelView : public QObject, public std::enable_shared_from_this<P2PLanPanelView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The screen that opens it makes it.")
    Q_PROPERTY(orvane::MessengerP2PLanService *service READ service CONSTANT)
    Q_PROPERTY(orvane::RecordListModel *peers READ peerModel CONSTANT)
    /// TCP links of this moment.
    OBSERVABLE(int, linkCount)
    /// How many tasks of this sheet run.
    OBSERVABLE(int, running)

public:
    explicit P2PLanPanelView(MessengerP2PLanService &service);

    RecordList<LanPeer> peers;
    RecordListModel *peerModel() { return &peers; }
    MessengerP2PLanService *service() const { return &m_service; }

    /// The sheet shows: refreshes if the switch is on.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void setEnabled(bool on);
    Q_INVOKABLE void refreshPeers();

private:
    static QCoro::Task<void> follow(std::shared_ptr<P2PLanPanelView> self, QCoro::Task<void> task);

    void showPeers();
    void countLinks();

    MessengerP2PLanService &m_service;
    QPropertyNotifier m_peers;
};

} // namespace orvane

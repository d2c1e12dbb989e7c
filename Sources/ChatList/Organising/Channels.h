// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The channels above the chats, and the form for a new one. Failures change nothing. Main thread.
class Channels : public QObject, public std::enable_shared_from_this<Channels> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the chat list.")
    Q_PROPERTY(orvane::RecordListModel *channels READ channelModel CONSTANT)
    OBSERVABLE(bool, showNewChannel)
    OBSERVABLE(QString, channelName)

public:
    Channels(MessengerSession &session, MessengerAPI &api);

    RecordList<MessengerChat> channels;
    RecordListModel *channelModel() { return &channels; }

    void loadChannels();
    /// Closes the form and clears it at once; without a name nothing happens.
    Q_INVOKABLE void createChannel();

private:
    using Self = std::shared_ptr<Channels>;
    static QCoro::Task<void> load(Self self);
    static QCoro::Task<void> create(Self self, QString title);

    MessengerSession &m_session;
    MessengerAPI &m_api;
};

} // namespace orvane

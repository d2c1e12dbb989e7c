// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "ChatList/Finding/FoundMessages.h"
#include "Model/MessengerUser.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The sheet of starred messages. Main thread.
class StarredMessagesView : public QObject, public std::enable_shared_from_this<StarredMessagesView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The chat list opens it.")
    Q_PROPERTY(orvane::RecordListModel *messages READ messageModel CONSTANT)
    OBSERVABLE(bool, isLoading)

public:
    StarredMessagesView(MessengerSession &session, MessengerAPI &api, const Contacts &contacts);

    RecordList<StarredMessage> messages;
    RecordListModel *messageModel() { return &messages; }

    /// A failure shows an empty list.
    Q_INVOKABLE void loadStarred();
    /// The sender's name where they are known, else their id.
    Q_INVOKABLE QString senderName(const QString &userID) const;

private:
    static QCoro::Task<void> load(std::shared_ptr<StarredMessagesView> self);

    MessengerSession &m_session;
    MessengerAPI &m_api;
    const Contacts m_contacts;
};

} // namespace orvane

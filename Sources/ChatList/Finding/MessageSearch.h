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

/// The search through the messages of all chats. Each search is a request; the one that ends last is shown.
/// Main thread.
class MessageSearch : public QObject, public std::enable_shared_from_this<MessageSearch> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the chat list.")
    Q_PROPERTY(orvane::RecordListModel *searchResults READ results CONSTANT)
    OBSERVABLE(bool, isSearchingMessages)
    /// How many requests wait for their answers; `isSearchingMessages` ends with the first of them.
    OBSERVABLE(int, searchesRunning)

public:
    MessageSearch(MessengerSession &session, MessengerAPI &api, const Contacts &contacts);

    RecordList<SearchHit> searchResults;
    RecordListModel *results() { return &searchResults; }

    /// For what stands in the search field: fewer than two characters find nothing, and ask nobody.
    void searchMessages(const QString &query);

private:
    static QCoro::Task<void> search(std::shared_ptr<MessageSearch> self, QString query);

    MessengerSession &m_session;
    MessengerAPI &m_api;
    const Contacts &m_contacts;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "ChatList/Finding/StarredMessagesView.h"

#include "Base/Task.h"

namespace orvane {

StarredMessagesView::StarredMessagesView(MessengerSession &session, MessengerAPI &api,
                                         const Contacts &contacts)
    : m_session(session)
    , m_api(api)
    , m_contacts(contacts) {}

void StarredMessagesView::loadStarred() {
    launch(load(shared_from_this()));
}

QString StarredMessagesView::senderName(const QString &userID) const {
    return nameOf(userID, m_contacts, userID);
}

QCoro::Task<void> StarredMessagesView::load(std::shared_ptr<StarredMessagesView> self) {
    self->isLoading = true;
    const std::optional<QList<QJsonObject>> records = co_await dropped(
        self->m_api.fetchStarredMessages(self->m_session.userIdText()), "the sheet says that there are none");
    QList<StarredMessage> loaded;
    for (const QJsonObject &record : records.value_or(QList<QJsonObject>()))
        if (const auto message = StarredMessage::from(record))
            loaded.append(*message);
    self->messages.assign(loaded);
    self->isLoading = false;
}

} // namespace orvane

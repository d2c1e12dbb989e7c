// SPDX-License-Identifier: MIT
#include "ChatList/Finding/StarredMessagesView.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "ChatList/People/NameOf.h"

namespace orvane {

namespace {

std::optional<StarredMessage> starredIn(const QJsonObject &record) {
    auto id = json::text(record, u"id");
    auto chatID = json::text(record, u"chat_id");
    auto senderID = json::text(record, u"sender_id");
    auto content = json::text(record, u"content");
    if (!id || !chatID || !senderID || !content)
        return std::nullopt;
    const auto createdAt = json::number(record, u"created_at");
    StarredMessage message;
    message.id = *id;
    message.chatID = *chatID;
    message.senderID = *senderID;
    message.content = *content;
    message.timestamp = createdAt ? times::fromUnixSeconds(*createdAt) : QDateTime::currentDateTimeUtc();
    return message;
}

} // namespace

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
        if (const auto message = starredIn(record))
            loaded.append(*message);
    self->messages.assign(loaded);
    self->isLoading = false;
}

} // namespace orvane

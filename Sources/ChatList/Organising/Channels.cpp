// SPDX-License-Identifier: MIT
#include "ChatList/Organising/Channels.h"

#include "Base/Task.h"
#include "ChatList/Organising/ChatAnswer.h"

namespace orvane {

Channels::Channels(MessengerSession &session, MessengerAPI &api)
    : m_session(session)
    , m_api(api) {}

void Channels::loadChannels() {
    launch(load(shared_from_this()));
}

void Channels::createChannel() {
    const QString title = channelName.value().trimmed();
    if (title.isEmpty())
        return;
    showNewChannel = false;
    channelName = QString();
    launch(create(shared_from_this(), title));
}

QCoro::Task<void> Channels::load(Self self) {
    const std::optional<QList<QJsonObject>> records = co_await dropped(
        self->m_api.listChannels(self->m_session.userIdText()), "the channels of before stay");
    if (!records)
        co_return;
    QList<MessengerChat> loaded;
    for (const QJsonObject &record : *records)
        if (const auto channel = listedChannel(record))
            loaded.append(*channel);
    self->channels.assign(loaded);
}

QCoro::Task<void> Channels::create(Self self, QString title) {
    const std::optional<QJsonObject> answer = co_await dropped(
        self->m_api.createChannel(title, self->m_session.userIdText()), "no channel appears");
    const auto channel = answer ? createdChannel(*answer, title) : std::nullopt;
    if (channel && self->channels.rowOf(channel->id) < 0)
        self->channels.insert(0, *channel);
}

} // namespace orvane

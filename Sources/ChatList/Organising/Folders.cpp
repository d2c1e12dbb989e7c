// SPDX-License-Identifier: MIT
#include "ChatList/Organising/Folders.h"

#include "Base/Task.h"

using namespace Qt::StringLiterals;

namespace orvane {

Folders::Folders(MessengerAPI &api)
    : m_api(api)
    , m_activeNotifier(activeFolderId.addNotifier([this] { Q_EMIT activeChanged(); })) {}

void Folders::loadFolders() {
    launch(load(shared_from_this()));
}

void Folders::createFolder() {
    const QString name = newFolderName.value().trimmed();
    if (name.isEmpty())
        return;
    showNewFolderAlert = false;
    newFolderName = QString();
    launch(create(shared_from_this(), name));
}

void Folders::addChat(const QString &folderId, const QString &chatId) {
    launch(dropped(m_api.manageFolderChat(folderId, chatId, u"add"_s), "the folder is as it was"));
}

const ChatFolder *Folders::active() const {
    const int row = activeFolderId.value().isEmpty() ? -1 : chatFolders.rowOf(activeFolderId);
    return row < 0 ? nullptr : &chatFolders.at(row);
}

QCoro::Task<void> Folders::load(Self self) {
    const std::optional<QList<ChatFolder>> loaded =
        co_await dropped(self->m_api.listChatFolders(), "the folders of before stay");
    if (!loaded)
        co_return;
    self->chatFolders.assign(*loaded);
    Q_EMIT self->activeChanged();
}

QCoro::Task<void> Folders::create(Self self, QString name) {
    const std::optional<ChatFolder> folder =
        co_await dropped(self->m_api.createChatFolder(name, u"📁"_s), "no folder appears");
    if (!folder)
        co_return;
    if (self->chatFolders.rowOf(folder->id) < 0)
        self->chatFolders.append(*folder);
    self->activeFolderId = folder->id;
}

} // namespace orvane

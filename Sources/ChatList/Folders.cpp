// SPDX-License-Identifier: MIT
#include "ChatList/Folders.h"

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
    launch(add(shared_from_this(), folderId, chatId));
}

const ChatFolder *Folders::active() const {
    const int row = activeFolderId.value().isEmpty() ? -1 : chatFolders.rowOf(activeFolderId);
    return row < 0 ? nullptr : &chatFolders.at(row);
}

QCoro::Task<void> Folders::load(Self self) {
    try {
        const QList<ChatFolder> loaded = co_await self->m_api.listChatFolders();
        self->chatFolders.assign(loaded);
        Q_EMIT self->activeChanged();
    } catch (const std::exception &) {
        // Dropped on purpose: the folders of before stay.
    }
}

QCoro::Task<void> Folders::create(Self self, QString name) {
    try {
        const std::optional<ChatFolder> folder = co_await self->m_api.createChatFolder(name, u"📁"_s);
        if (!folder)
            co_return;
        if (self->chatFolders.rowOf(folder->id) < 0)
            self->chatFolders.append(*folder);
        self->activeFolderId = folder->id;
    } catch (const std::exception &) {
        // Dropped on purpose: no folder appears.
    }
}

QCoro::Task<void> Folders::add(Self self, QString folderId, QString chatId) {
    try {
        co_await self->m_api.manageFolderChat(folderId, chatId, u"add"_s);
    } catch (const std::exception &) {
        // Dropped on purpose: the folder is as it was.
    }
}

} // namespace orvane

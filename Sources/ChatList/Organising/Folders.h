// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "Model/ChatFolder.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The folders over the chats, which one is open, and the form for a new one. Failures change nothing. Main
/// thread.
class Folders : public QObject, public std::enable_shared_from_this<Folders> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the chat list.")
    Q_PROPERTY(orvane::RecordListModel *chatFolders READ folderModel CONSTANT)
    /// Empty for all chats.
    OBSERVABLE(QString, activeFolderId)
    OBSERVABLE(bool, showNewFolderAlert)
    OBSERVABLE(QString, newFolderName)

public:
    explicit Folders(MessengerAPI &api);

    RecordList<ChatFolder> chatFolders;
    RecordListModel *folderModel() { return &chatFolders; }

    void loadFolders();
    /// Clears the form at once; without a name nothing happens.
    Q_INVOKABLE void createFolder();
    /// On the server only.
    Q_INVOKABLE void addChat(const QString &folderId, const QString &chatId);

    /// The chats of the open folder; null where nothing is left out.
    const ChatFolder *active() const;

Q_SIGNALS:
    /// Another folder is open, or its chats are others.
    void activeChanged();

private:
    using Self = std::shared_ptr<Folders>;
    static QCoro::Task<void> load(Self self);
    static QCoro::Task<void> create(Self self, QString name);

    MessengerAPI &m_api;
    QPropertyNotifier m_activeNotifier;
};

} // namespace orvane

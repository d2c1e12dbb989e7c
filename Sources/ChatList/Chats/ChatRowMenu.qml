// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

// What can be done with a chat of the list.
ContextMenu {
    id: root

    required property MessengerChatListView screen
    required property string chatID
    readonly property bool pinned: screen.isPinned(chatID)

    Component.onCompleted: {
        if (screen.folders.chatFolders.count === 0)
            removeMenu(folders);
    }

    ContextMenuItem {
        text: root.pinned ? "Unpin" : "Pin"
        onChosen: root.screen.togglePinned(root.chatID)
    }
    ContextMenu {
        id: folders
        title: "Add to folder"

        Instantiator {
            model: root.screen.folders.chatFolders
            delegate: ContextMenuItem {
                required property chatFolder record

                text: record.icon + " " + record.name
                onChosen: root.screen.folders.addChat(record.id, root.chatID)
            }
            onObjectAdded: (index, object) => folders.insertItem(index, object)
            onObjectRemoved: (index, object) => folders.removeItem(object)
        }
    }
    ContextMenuItem {
        text: "Delete"
        dangerous: true
        onChosen: root.screen.deleteChat(root.chatID)
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.LocalNetwork

// The list of chats beside the open chat.
FocusScope {
    id: root

    required property MessengerChatListView screen
    /// Remembered by the window.
    property int listWidth: 320

    Component.onCompleted: screen.appear()

    ChatSidebar {
        id: sidebar
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: root.listWidth
        screen: root.screen
        focus: detail.status !== Loader.Ready
    }
    PaneDivider {
        id: divider
        anchors { top: parent.top; bottom: parent.bottom; left: sidebar.right }
        value: root.listWidth
        from: 260
        to: 420
        onMoved: newValue => root.listWidth = newValue
    }
    EmptyState {
        visible: detail.status !== Loader.Ready
        anchors.verticalCenter: parent.verticalCenter
        x: divider.x + divider.width + (parent.width - divider.x - divider.width - width) / 2
        width: 320
        symbol: "message.fill"
        title: "OrvaneTalk"
        hint: "AI messenger. Pick a chat."
    }
    // Each chat has a screen of its own: nothing that stands there is ever handed another model.
    Loader {
        id: detail

        function show() {
            source = "";
            if (root.screen.openChat)
                setSource("qrc:/OrvaneTalk/Conversation/ChatScreen.qml", { screen: root.screen.openChat, focus: true });
        }

        anchors { left: divider.right; right: parent.right; top: parent.top; bottom: parent.bottom }
        focus: status === Loader.Ready
        Component.onCompleted: show()
    }
    Connections {
        target: root.screen
        function onOpenChatChanged() { detail.show(); }
    }

    SheetLoader {
        shown: root.screen.newGroup.showNewGroup
        sourceComponent: NewGroupSheet {
            screen: root.screen
            onClosed: root.screen.newGroup.showNewGroup = false
        }
    }
    SheetLoader {
        shown: root.screen.channels.showNewChannel
        sourceComponent: NewChannelSheet {
            channels: root.screen.channels
            onClosed: root.screen.channels.showNewChannel = false
        }
    }
    SheetLoader {
        shown: root.screen.folders.showNewFolderAlert
        sourceComponent: NewFolderSheet {
            folders: root.screen.folders
            onClosed: root.screen.folders.showNewFolderAlert = false
        }
    }
    SheetLoader {
        shown: root.screen.showContacts
        sourceComponent: ContactsSheet {
            screen: root.screen.contactList()
            onClosed: root.screen.showContacts = false
        }
    }
    SheetLoader {
        shown: root.screen.showP2P
        sourceComponent: P2PLanPanel {
            panel: root.screen.p2pPanel()
            onClosed: root.screen.showP2P = false
        }
    }
    SheetLoader {
        shown: root.screen.showStarred
        sourceComponent: StarredSheet {
            starred: root.screen.starredMessages()
            onClosed: root.screen.showStarred = false
        }
    }

    Shortcut {
        sequence: "Ctrl+K"
        onActivated: sidebar.focusSearch()
    }
    Shortcut {
        sequence: "Alt+Up"
        onActivated: root.screen.openNeighbour(-1)
    }
    Shortcut {
        sequence: "Alt+Down"
        onActivated: root.screen.openNeighbour(1)
    }
    Repeater {
        model: 9
        delegate: Item {
            id: place

            required property int index

            Shortcut {
                sequence: "Ctrl+" + (place.index + 1)
                onActivated: root.screen.openRow(place.index)
            }
        }
    }
}

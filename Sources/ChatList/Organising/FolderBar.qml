// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

// The folders side by side; the arrow keys go along them.
ListView {
    id: root

    required property Folders folders

    implicitHeight: 48
    orientation: ListView.Horizontal
    spacing: Theme.gap8
    leftMargin: Theme.gap16
    rightMargin: Theme.gap16
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    keyNavigationEnabled: true
    Accessible.role: Accessible.Grouping
    Accessible.name: "Folders"
    model: folders.chatFolders

    header: Item {
        width: all.width + root.spacing
        height: root.height

        Chip {
            id: all
            anchors.verticalCenter: parent.verticalCenter
            text: "All chats"
            checked: root.folders.activeFolderId === ""
            onClicked: root.folders.activeFolderId = ""
        }
    }
    delegate: Item {
        id: place

        required property chatFolder record

        width: chip.width
        height: root.height

        Chip {
            id: chip
            anchors.verticalCenter: parent.verticalCenter
            text: place.record.icon + " " + place.record.name
            checked: root.folders.activeFolderId === place.record.id
            onClicked: root.folders.activeFolderId = place.record.id
        }
    }
    footer: Item {
        width: add.width + root.spacing
        height: root.height

        SymbolButton {
            id: add
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            symbol: "plus.circle.fill"
            text: "New folder"
            onClicked: root.folders.showNewFolderAlert = true
        }
    }
}

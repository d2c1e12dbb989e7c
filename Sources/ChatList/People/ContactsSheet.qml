// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// Finding people, answering their requests, bringing in the address book.
Sheet {
    id: root

    required property MessengerContactListView screen
    readonly property bool showsRequests: screen.selectedTab === 1
    /// What the window has for a list, of the same size whatever is in it.
    readonly property int room: Math.min(560, parent ? parent.height - 2 * Theme.gap32 : 560) - 56 - Theme.gap16

    title: "Contacts"
    closeText: "Done"
    Component.onCompleted: screen.loadData()

    titleButtons: Item {
        width: 36
        height: 36

        SymbolButton {
            // Hidden, it would lose the focus.
            opacity: root.screen.isImportingContacts ? 0 : 1
            symbol: "person.crop.circle.badge.plus"
            text: "Import address book"
            onClicked: if (!root.screen.isImportingContacts) root.screen.importSystemContacts()
        }
        Spinner {
            anchors.centerIn: parent
            running: root.screen.isImportingContacts
        }
    }

    Row {
        id: tabs
        spacing: Theme.gap8
        Accessible.role: Accessible.Grouping
        Accessible.name: "Contacts or requests"

        Chip {
            text: "Contacts"
            checked: !root.showsRequests
            onClicked: root.screen.selectedTab = 0
        }
        Chip {
            text: root.screen.incomingRequests.count > 0 ? "Requests (" + root.screen.incomingRequests.count + ")" : "Requests"
            checked: root.showsRequests
            onClicked: root.screen.selectedTab = 1
        }
    }
    SearchField {
        id: search
        visible: !root.showsRequests
        width: parent.width
        focus: true
        placeholderText: "Search users..."
        text: root.screen.searchQuery
        onTextEdited: root.screen.searchQuery = text
        Keys.onDownPressed: {
            contacts.currentIndex = 0;
            contacts.forceActiveFocus();
        }

        Spinner {
            anchors { right: parent.right; rightMargin: 40; verticalCenter: parent.verticalCenter }
            running: root.screen.isSearching
        }
    }
    PlainText {
        id: outcome
        readonly property bool failed: root.screen.importError !== undefined

        visible: text
        width: parent.width
        wrapMode: Text.Wrap
        text: failed ? root.screen.importError
            : root.screen.importedCount > 0 ? "Imported contacts: " + root.screen.importedCount : ""
        font: Theme.secondaryFont
        color: failed ? Theme.danger : Theme.dimmed
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
    Item {
        x: -Theme.gap8
        width: parent.width + 2 * Theme.gap8
        height: root.room - y

        ContactList {
            id: contacts
            anchors.fill: parent
            visible: !root.showsRequests
            screen: root.screen
        }
        ContactRequestList {
            anchors.fill: parent
            visible: root.showsRequests
            screen: root.screen
        }
    }
}

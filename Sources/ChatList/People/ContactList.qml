// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// Who was found, and below them who is known: one list for the arrow keys.
ListView {
    id: root

    required property MessengerContactListView screen
    readonly property int found: screen.searchResults.count
    readonly property string contactsTitle: "My contacts (" + screen.contacts.count + ")"

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    Accessible.name: "Contacts"
    model: screen.people
    T.ScrollBar.vertical: ScrollThumb {}

    delegate: FocusScope {
        id: place

        required property listedPerson record
        required property int index
        readonly property bool isFound: index < root.found
        readonly property bool canAsk: isFound && !record.asked && record.userID !== ""
        readonly property string title: index === root.found ? root.contactsTitle : index === 0 ? "Search results" : ""

        function ask() {
            if (canAsk)
                root.screen.sendRequest(record.userID);
        }

        width: root.width
        height: row.y + row.height
        onActiveFocusChanged: if (activeFocus) root.currentIndex = index
        Keys.onReturnPressed: ask()
        Keys.onEnterPressed: ask()

        SidebarHeading {
            x: -Theme.gap8
            visible: text
            text: place.title
        }
        ContactRow {
            id: row
            y: place.title ? 40 : 0
            width: parent.width
            focus: true
            record: place.record
            subtitle: !place.isFound ? record.status : record.username ? "@" + record.username : ""

            PlainText {
                visible: place.isFound && place.record.asked
                anchors.verticalCenter: parent.verticalCenter
                text: "Request sent"
                font: Theme.secondaryFont
                color: Theme.dimmed
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            SymbolButton {
                visible: place.canAsk
                symbol: "person.crop.circle.badge.plus"
                color: Theme.accent
                text: "Send request to " + place.record.name
                onClicked: place.ask()
            }
        }
    }
    footer: Item {
        visible: root.screen.contacts.count === 0
        width: root.width
        height: visible ? Math.max(220, root.height) : 0

        SidebarHeading {
            x: -Theme.gap8
            text: root.contactsTitle
        }
        EmptyState {
            anchors.centerIn: parent
            width: 320
            visible: !root.screen.isLoading
            symbol: "person.3.fill"
            title: "No contacts yet"
            hint: "Search for people, or import your address book."
        }
        Spinner {
            anchors.centerIn: parent
            running: root.screen.isLoading
        }
    }
}

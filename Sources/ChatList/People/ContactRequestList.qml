// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// Who wants to be a contact. Return accepts, Delete rejects.
ListView {
    id: root

    required property MessengerContactListView screen

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    Accessible.role: Accessible.List
    Accessible.name: "Requests"
    model: screen.incomingRequests
    T.ScrollBar.vertical: ScrollThumb {}

    delegate: FocusScope {
        id: place

        required property listedPerson record
        required property int index
        readonly property bool canAnswer: !record.asked && record.userID !== ""

        function accept() {
            if (canAnswer)
                root.screen.acceptRequest(record.userID);
        }
        function reject() {
            if (canAnswer)
                root.screen.rejectRequest(record.userID);
        }

        width: root.width
        height: row.height
        onActiveFocusChanged: if (activeFocus) root.currentIndex = index
        Keys.onReturnPressed: accept()
        Keys.onEnterPressed: accept()
        Keys.onDeletePressed: reject()

        ContactRow {
            id: row
            width: parent.width
            focus: true
            record: place.record
            subtitle: "wants to connect"

            Spinner {
                anchors.verticalCenter: parent.verticalCenter
                running: place.record.asked
            }
            SymbolButton {
                visible: place.canAnswer
                symbol: "xmark"
                color: Theme.danger
                text: "Reject " + place.record.name
                onClicked: place.reject()
            }
            SymbolButton {
                visible: place.canAnswer
                symbol: "checkmark"
                color: Theme.accent
                text: "Accept " + place.record.name
                onClicked: place.accept()
            }
        }
    }
    EmptyState {
        anchors.centerIn: parent
        width: 280
        visible: root.count === 0 && !root.screen.isLoading
        symbol: "person.crop.circle.badge.questionmark"
        title: "No pending requests"
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

Sheet {
    id: root

    required property StarredMessagesView starred

    title: "Starred Messages"
    closeText: "Done"
    Component.onCompleted: starred.loadStarred()

    ListView {
        id: list
        x: -Theme.gap8
        width: parent.width + 2 * Theme.gap8
        height: count > 0 ? Math.min(contentHeight, 420) : 240
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Starred Messages"
        model: root.starred.messages
        T.ScrollBar.vertical: ScrollThumb {}

        delegate: StarredRow {
            width: list.width
            senderName: root.starred.senderName(record.senderID)
        }
        EmptyState {
            anchors.centerIn: parent
            width: 280
            visible: list.count === 0 && !root.starred.isLoading
            symbol: "star"
            title: "No starred messages"
        }
        Spinner {
            anchors.centerIn: parent
            running: root.starred.isLoading && list.count === 0
        }
    }
}

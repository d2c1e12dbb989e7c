// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

Sheet {
    id: root

    required property MessageForwarding forwarding

    title: "Forward to..."
    onOpened: list.forceActiveFocus()

    ListView {
        id: list
        x: -Theme.gap8
        width: parent.width + 2 * Theme.gap8
        height: count > 0 ? Math.min(contentHeight, 420) : 200
        clip: true
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        model: root.forwarding.availableChats
        Accessible.role: Accessible.List
        Accessible.name: root.title
        T.ScrollBar.vertical: ScrollThumb {}

        delegate: T.ItemDelegate {
            id: row

            required property messengerChat modelData
            required property int index

            width: list.width
            height: 52
            text: root.forwarding.nameOf(modelData)
            hoverEnabled: true
            focus: true
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            onClicked: root.forwarding.forwardTo(modelData)
            Accessible.role: Accessible.ListItem
            Accessible.name: text
            Accessible.onPressAction: clicked()

            background: Rectangle {
                radius: Theme.controlRadius
                color: row.down ? Theme.pressed : row.hovered ? Theme.raised : "transparent"
                border { width: row.activeFocus ? 2 : 0; color: Theme.accent }
            }
            contentItem: Item {
                Avatar {
                    id: avatar
                    x: Theme.gap8
                    anchors.verticalCenter: parent.verticalCenter
                    size: 36
                    hueId: root.forwarding.hueIdOf(row.modelData)
                    name: row.text
                    symbol: row.modelData.symbol
                }
                PlainText {
                    anchors {
                        left: avatar.right; leftMargin: Theme.gap12
                        right: parent.right; rightMargin: Theme.gap8
                        verticalCenter: parent.verticalCenter
                    }
                    text: row.text
                    maximumLineCount: 1
                }
            }
        }
        EmptyState {
            anchors.centerIn: parent
            width: 280
            visible: list.count === 0
            symbol: "arrowshape.turn.up.right"
            title: "No other chats"
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// The pinned messages of this chat. It is there while there are any.
Rectangle {
    id: root

    required property MessagePins pins
    readonly property int side: Theme.columnSide(width)

    visible: list.count > 0
    implicitHeight: visible ? Math.min(list.contentHeight, 132) + 1 : 0
    color: Theme.surface

    ListView {
        id: list
        anchors { fill: parent; bottomMargin: 1 }
        clip: true
        model: root.pins.pinnedMessages
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Pinned messages"
        T.ScrollBar.vertical: ScrollThumb {}

        delegate: Item {
            id: row

            required property messengerMessage modelData

            width: list.width
            height: 44
            Accessible.role: Accessible.ListItem
            Accessible.name: label.text

            Symbol {
                id: mark
                x: root.side
                anchors.verticalCenter: parent.verticalCenter
                name: "pin.fill"
                size: 16
                color: Theme.accent
            }
            PlainText {
                id: label
                anchors {
                    left: mark.right; leftMargin: Theme.gap8
                    right: unpin.left; rightMargin: Theme.gap8
                    verticalCenter: parent.verticalCenter
                }
                text: root.pins.lineOf(row.modelData)
                font: Theme.secondaryFont
                maximumLineCount: 1
                Accessible.ignored: true
            }
            SymbolButton {
                id: unpin
                anchors { right: parent.right; rightMargin: root.side - Theme.gap8; verticalCenter: parent.verticalCenter }
                symbol: "xmark.circle.fill"
                symbolSize: 16
                text: "Unpin"
                onClicked: root.pins.pinUnpin(row.modelData)
            }
            TapHandler {
                onTapped: root.pins.scrollTo()
            }
        }
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 1
        color: Theme.divider
    }
}

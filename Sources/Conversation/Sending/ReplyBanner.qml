// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The message that is being answered.
Rectangle {
    id: root

    required property MessengerChatView screen
    readonly property var replied: screen.replyToMessage
    readonly property int side: Theme.columnSide(width)

    visible: replied !== undefined
    implicitHeight: visible ? 52 : 0
    color: Theme.surface

    Rectangle {
        x: root.side
        anchors.verticalCenter: parent.verticalCenter
        width: 3
        height: 36
        radius: 1.5
        color: Theme.accent
    }
    Column {
        anchors {
            left: parent.left; leftMargin: root.side + Theme.gap12
            right: close.left; rightMargin: Theme.gap8
            verticalCenter: parent.verticalCenter
        }

        PlainText {
            width: parent.width
            text: root.replied ? root.screen.nameInChat(root.replied.senderID) : ""
            font: Theme.strongSecondaryFont
            color: Theme.accent
        }
        PlainText {
            width: parent.width
            text: root.replied ? root.screen.lineOf(root.replied.content) : ""
            font: Theme.secondaryFont
            color: Theme.dimmed
            maximumLineCount: 1
        }
    }
    SymbolButton {
        id: close
        anchors { right: parent.right; rightMargin: root.side - Theme.gap8; verticalCenter: parent.verticalCenter }
        symbol: "xmark.circle.fill"
        symbolSize: 16
        text: "Cancel reply"
        onClicked: root.screen.cancelReply()
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 1
        color: Theme.divider
    }
}

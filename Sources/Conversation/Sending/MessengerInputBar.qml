// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Where a message is written, with what can be sent besides. Enter sends, and the field grows to eight lines.
FocusScope {
    id: root

    property string text
    property bool isInputFocused: false
    signal edited(string newText)
    signal focusTold(bool focused)
    signal send
    signal sticker
    signal poll
    signal aiToggle
    signal editLast
    signal escaped
    signal copyWanted

    readonly property int columnWidth: width - 2 * Theme.columnSide(width)

    implicitHeight: (notice.visible ? notice.implicitHeight + Theme.gap4 : 0) + writing.height + 2 * Theme.gap12

    /// Gives the keyboard to the field, whatever in the bar had it last.
    function write() {
        writing.write();
    }

    onIsInputFocusedChanged: if (isInputFocused && !writing.hasFocus) write()

    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 1
        color: Theme.divider
    }
    FullNotice {
        id: notice
        anchors { left: writing.left; right: writing.right; top: parent.top; topMargin: Theme.gap4 }
        field: writing
    }
    Row {
        id: before
        x: Math.round((root.width - root.columnWidth) / 2)
        anchors { bottom: writing.bottom; bottomMargin: Theme.gap4 }

        SymbolButton {
            symbol: "face.smiling"
            text: "Stickers"
            onClicked: root.sticker()
        }
        SymbolButton {
            symbol: "chart.bar.fill"
            text: "Poll"
            onClicked: root.poll()
        }
    }
    WritingField {
        id: writing
        anchors {
            left: before.right; leftMargin: Theme.gap8
            right: after.left; rightMargin: Theme.gap8
            bottom: parent.bottom; bottomMargin: Theme.gap12
        }
        height: implicitHeight
        text: root.text
        prompt: "Message..."
        rightInset: sendButton.width + Theme.gap8
        onEdited: newText => root.edited(newText)
        onFocusTold: focused => root.focusTold(focused)
        onAccepted: root.send()
        onEscaped: root.escaped()
        onUpWanted: root.editLast()
        onCopyWanted: root.copyWanted()

        SymbolButton {
            id: sendButton
            anchors { right: parent.right; rightMargin: Theme.gap4; bottom: parent.bottom; bottomMargin: Theme.gap4 }
            visible: !writing.isEmpty
            symbol: "arrow.up.circle.fill"
            symbolSize: 28
            color: Theme.accent
            text: "Send"
            onClicked: root.send()
        }
    }
    SymbolButton {
        id: after
        x: before.x + root.columnWidth - width
        anchors { bottom: writing.bottom; bottomMargin: Theme.gap4 }
        symbol: "sparkles"
        text: "AI"
        onClicked: root.aiToggle()
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.ChatList

// One starred message: who, when, what.
Item {
    id: root

    required property starredMessage record
    required property string senderName

    height: content.y + content.height + Theme.gap12
    Accessible.role: Accessible.ListItem
    Accessible.name: senderName + ", " + record.content.slice(0, 200) + ", " + time.text

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
    }
    PlainText {
        id: name
        x: Theme.gap8
        y: Theme.gap12
        width: parent.width - time.width - 2 * Theme.gap8 - Theme.gap12
        maximumLineCount: 1
        text: root.senderName
        font: Theme.strongBodyFont
        Accessible.ignored: true
    }
    PlainText {
        id: time
        anchors { right: parent.right; rightMargin: Theme.gap8; baseline: name.baseline }
        text: DisplayTimes.brief(root.record.timestamp)
        font: Theme.captionFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    PlainText {
        id: content
        anchors { left: name.left; right: parent.right; rightMargin: Theme.gap8; top: name.bottom; topMargin: Theme.gap4 }
        text: root.record.content.slice(0, 1000)
        wrapMode: Text.Wrap
        maximumLineCount: 4
        color: Theme.dimmed
        Accessible.ignored: true
    }
}

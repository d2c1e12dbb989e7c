// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// Says that something unfinished is at work, and leads to what there is to know of it.
ActionButton {
    id: root

    implicitHeight: 24
    implicitWidth: content.implicitWidth
    font: Theme.captionFont

    background: Rectangle {
        radius: height / 2
        color: root.down ? Theme.pressed : root.hovered ? Theme.raised : "transparent"
        border { width: 1; color: Theme.divider }
        FocusRing { control: root }
    }
    contentItem: Row {
        id: content
        leftPadding: Theme.gap8
        rightPadding: Theme.gap8
        spacing: Theme.gap4

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: "flask.fill"
            size: 12
            color: Theme.accent
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            text: root.text
            font: root.font
            color: Theme.dimmed
        }
    }
}

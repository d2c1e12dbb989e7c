// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The day on which the messages below were written.
Item {
    id: root

    required property date time

    height: Theme.gap16 + pill.height
    Accessible.ignored: true

    Rectangle {
        id: pill
        anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom }
        width: label.implicitWidth + 2 * Theme.gap12
        height: label.implicitHeight + Theme.gap8
        radius: height / 2
        color: Theme.surface

        PlainText {
            id: label
            anchors.centerIn: parent
            text: DisplayTimes.day(root.time)
            font: Theme.captionFont
            color: Theme.dimmed
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// The name of a block of rows.
Item {
    id: root

    required property string text
    default property alias extras: extras.data

    width: parent ? parent.width : 0
    height: 40

    PlainText {
        anchors { left: parent.left; leftMargin: Theme.gap16; bottom: parent.bottom; bottomMargin: Theme.gap8 }
        text: root.text
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Row {
        id: extras
        anchors { right: parent.right; rightMargin: Theme.gap8; verticalCenter: parent.verticalCenter }
    }
}

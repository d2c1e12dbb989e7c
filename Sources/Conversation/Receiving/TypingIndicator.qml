// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// Who is writing.
Item {
    id: root

    required property string line

    implicitHeight: line ? 24 : 0

    PlainText {
        anchors {
            left: parent.left; leftMargin: Theme.columnSide(root.width) + Theme.gap12
            right: parent.right; rightMargin: Theme.gap16
        }
        text: root.line
        visible: text
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}

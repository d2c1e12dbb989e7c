// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// What others think of a message, under its bubble.
Flow {
    id: root

    required property var labels
    required property bool own

    spacing: Theme.gap4
    layoutDirection: own ? Qt.RightToLeft : Qt.LeftToRight

    Repeater {
        model: root.labels
        delegate: Rectangle {
            id: capsule

            required property string modelData

            width: Math.min(label.implicitWidth, 120) + 2 * Theme.gap8
            height: 24
            radius: 12
            color: root.own ? Theme.ownReaction : Theme.reaction
            border { width: 1; color: Theme.divider }

            PlainText {
                id: label
                anchors.centerIn: parent
                width: parent.width - 2 * Theme.gap8
                text: capsule.modelData
                font: Theme.secondaryFont
                maximumLineCount: 1
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}

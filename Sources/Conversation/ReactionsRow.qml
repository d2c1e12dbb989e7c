import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.Model

// What others think of a message, under its bubble.
Flow {
    id: root

    required property messengerMessage record
    required property bool own

    spacing: Theme.gap4
    layoutDirection: own ? Qt.RightToLeft : Qt.LeftToRight

    Repeater {
        model: root.record.reactions
        delegate: Rectangle {
            id: capsule

            required property messageReaction modelData

            width: label.implicitWidth + 2 * Theme.gap8
            height: 24
            radius: 12
            color: root.own ? Theme.ownReaction : Theme.reaction
            border { width: 1; color: Theme.divider }

            PlainText {
                id: label
                anchors.centerIn: parent
                text: capsule.modelData.userIDs.length >= 2
                    ? capsule.modelData.emoji + " " + capsule.modelData.userIDs.length : capsule.modelData.emoji
                font: Theme.secondaryFont
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Offered replies; one that is picked waits in the input.
Flickable {
    id: root

    required property ChatAssistant assistant
    signal picked(string reply)

    visible: replies.count > 0
    implicitHeight: visible ? 32 + 2 * Theme.gap8 : 0
    contentWidth: row.width + 2 * row.x
    flickableDirection: Flickable.HorizontalFlick
    boundsBehavior: Flickable.StopAtBounds
    clip: true

    Row {
        id: row
        x: Theme.columnSide(root.width)
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap8

        Repeater {
            id: replies
            model: root.assistant.smartReplies
            delegate: ActionButton {
                id: reply

                required property string modelData

                text: modelData
                implicitHeight: 32
                implicitWidth: Math.min(label.implicitWidth, 280)
                onClicked: root.picked(modelData)
                background: Rectangle {
                    radius: height / 2
                    color: reply.down ? Theme.pressed : reply.hovered ? Theme.raised : Theme.surface
                    border { width: 1; color: Theme.divider }
                    FocusRing { control: reply; radius: 16 }
                }
                contentItem: PlainText {
                    id: label
                    leftPadding: Theme.gap12
                    rightPadding: Theme.gap12
                    text: reply.modelData.replace(/\s+/g, " ")
                    font: Theme.secondaryFont
                    verticalAlignment: Text.AlignVCenter
                    maximumLineCount: 1
                }
            }
        }
        PlainText {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.assistant.personaSamples >= 1
            text: root.assistant.personaSamples + " образцов"
            font: Theme.captionFont
            color: Theme.dimmed
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}

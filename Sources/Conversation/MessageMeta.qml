import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// When a message was said, and what became of it.
Row {
    id: root

    required property messengerMessage record
    required property bool own
    required property color ink

    spacing: Theme.gap4

    Symbol {
        visible: root.record.isStarred
        anchors.verticalCenter: parent.verticalCenter
        name: "star.fill"
        size: 11
        color: root.ink
    }
    PlainText {
        visible: root.record.editedAt !== undefined
        text: "edited"
        font: Theme.captionFont
        color: root.ink
        Accessible.ignored: true
    }
    PlainText {
        text: DisplayTimes.clock(root.record.timestamp)
        font: Theme.captionFont
        color: root.ink
        Accessible.ignored: true

        HoverHandler { id: hover }

        Loader {
            active: hover.hovered
            anchors { bottom: parent.top; bottomMargin: Theme.gap4; right: parent.right }
            z: 1
            sourceComponent: HoverTip {
                text: DisplayTimes.full(root.record.timestamp)
            }
        }
    }
    DeliveryIcon {
        visible: root.own
        anchors.verticalCenter: parent.verticalCenter
        status: root.record.deliveryStatus
        ink: root.ink
    }
}

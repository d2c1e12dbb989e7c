import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model
import OrvaneTalk.RichContent

// A sticker stands without a bubble.
Column {
    id: root

    required property MessengerChatView screen
    required property messengerMessage record
    required property bool own
    required property bool focused

    StickerView {
        anchors.right: root.own ? parent.right : undefined
        code: root.screen.plainText(root.record.content)

        Rectangle {
            anchors { fill: parent; margins: -3 }
            visible: root.focused
            radius: Theme.bubbleRadius
            color: "transparent"
            border { width: 2; color: Theme.accent }
        }
    }
    MessageMeta {
        anchors.right: root.own ? parent.right : undefined
        record: root.record
        own: root.own
        ink: Theme.dimmed
    }
}

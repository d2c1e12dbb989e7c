import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// How much of the conversation a summary covers.
ContextMenu {
    id: root

    required property MessengerChatView screen

    ContextMenuItem {
        text: "Today"
        onTriggered: root.screen.summarizeAction("day")
    }
    ContextMenuItem {
        text: "This week"
        onTriggered: root.screen.summarizeAction("week")
    }
    ContextMenuItem {
        text: "Everything"
        onTriggered: root.screen.summarizeAction("all")
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// How much of the conversation a summary covers.
ContextMenu {
    id: root

    required property MessengerChatView screen

    ContextMenuItem {
        text: "Today"
        onChosen: root.screen.summarizeAction("day")
    }
    ContextMenuItem {
        text: "This week"
        onChosen: root.screen.summarizeAction("week")
    }
    ContextMenuItem {
        text: "Everything"
        onChosen: root.screen.summarizeAction("all")
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// How much of the conversation a summary covers.
ContextMenu {
    id: root

    required property ChatAssistant assistant

    ContextMenuItem {
        text: "Today"
        onChosen: root.assistant.summarizeAction("day")
    }
    ContextMenuItem {
        text: "This week"
        onChosen: root.assistant.summarizeAction("week")
    }
    ContextMenuItem {
        text: "Everything"
        onChosen: root.assistant.summarizeAction("all")
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The conversation in short.
Banner {
    id: root

    required property ChatAssistant assistant

    visible: assistant.chatSummary !== undefined || assistant.isSummarizing
    symbol: "text.and.command.macwindow"
    heading: "Summary"
    onClosed: assistant.closeSummary()

    FoldingText {
        width: parent.width
        visible: root.assistant.chatSummary !== undefined
        foldedLines: 6
        text: root.assistant.chatSummary ?? ""
    }
    Spinner {
        running: root.assistant.isSummarizing && root.assistant.chatSummary === undefined
        visible: running
    }
}

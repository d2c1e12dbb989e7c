// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The conversation in short.
Banner {
    id: root

    required property MessengerChatView screen

    visible: screen.chatSummary !== undefined || screen.isSummarizing
    symbol: "text.and.command.macwindow"
    heading: "Summary"
    onClosed: screen.closeSummary()

    FoldingText {
        width: parent.width
        visible: root.screen.chatSummary !== undefined
        foldedLines: 6
        text: root.screen.chatSummary ?? ""
    }
    Spinner {
        running: root.screen.isSummarizing && root.screen.chatSummary === undefined
        visible: running
    }
}

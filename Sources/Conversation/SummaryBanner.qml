import QtQuick
import QtQuick.Templates as T
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

    Flickable {
        width: parent.width
        height: Math.min(text.implicitHeight, 180)
        visible: root.screen.chatSummary !== undefined
        contentHeight: text.implicitHeight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ScrollThumb {}

        PlainText {
            id: text
            width: parent.width - Theme.gap12
            text: root.screen.chatSummary ?? ""
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            lineHeight: Theme.lineHeight
        }
    }
    Spinner {
        running: root.screen.isSummarizing && root.screen.chatSummary === undefined
        visible: running
    }
}

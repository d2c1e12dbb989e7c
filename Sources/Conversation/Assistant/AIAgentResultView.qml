// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// What the agent's search found.
Banner {
    id: root

    required property ChatAssistant assistant

    visible: assistant.showSearchPanel
    symbol: "magnifyingglass"
    heading: "Search results"
    onClosed: assistant.showSearchPanel = false

    ListView {
        id: list
        width: parent.width
        height: Math.min(contentHeight, 200)
        visible: count > 0
        clip: true
        spacing: Theme.gap8
        model: root.assistant.agentResults
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Search results"
        T.ScrollBar.vertical: ScrollThumb {}

        delegate: PlainText {
            required property string modelData

            width: list.width - Theme.gap12
            text: modelData.slice(0, 1000)
            wrapMode: Text.Wrap
            maximumLineCount: 6
            Accessible.role: Accessible.ListItem
            Accessible.name: text
        }
    }
    PlainText {
        visible: list.count === 0
        text: "Nothing found"
        font: Theme.secondaryFont
        color: Theme.dimmed
    }
}

import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The messages, oldest first, kept at the newest one unless the person has scrolled away from it.
ListView {
    id: root

    required property MessengerChatView screen
    readonly property int columnWidth: Math.min(width - 2 * Theme.gap16, 760)
    property bool followsNewest: true

    model: screen.messages
    clip: true
    activeFocusOnTab: count > 0
    keyNavigationEnabled: true
    boundsBehavior: Flickable.StopAtBounds
    // A page of history is small; keeping it whole makes its height exact and its scrolling steady.
    cacheBuffer: 100000
    topMargin: Math.max(Theme.gap16, height - contentHeight)
    footer: Item { height: Theme.gap8 }
    Accessible.role: Accessible.List
    Accessible.name: "Messages"

    onMovementEnded: followsNewest = atYEnd
    onHeightChanged: if (followsNewest) Qt.callLater(positionViewAtEnd)
    onContentHeightChanged: if (followsNewest) Qt.callLater(positionViewAtEnd)
    onScreenChanged: followsNewest = true

    T.ScrollBar.vertical: ScrollThumb {
        onPressedChanged: if (!pressed) root.followsNewest = root.atYEnd
    }

    delegate: MessageRow {
        width: root.width
        columnWidth: root.columnWidth
        screen: root.screen
        count: root.count
    }

    EmptyState {
        anchors.centerIn: parent
        width: Math.min(parent.width - 2 * Theme.gap32, 320)
        visible: root.count === 0 && !root.screen.isLoading
        symbol: "message.fill"
        title: "No messages yet"
        hint: "Say hello: what you write below is the first message here."
    }
    Spinner {
        anchors.centerIn: parent
        running: root.count === 0 && root.screen.isLoading
    }
}

import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The messages, oldest first, kept at the newest one unless the person has scrolled away from it.
ListView {
    id: root
    objectName: "messages"

    required property MessengerChatView screen
    readonly property int columnWidth: width - 2 * Theme.columnSide(width)
    property bool followsNewest: true

    model: screen.messages
    clip: true
    activeFocusOnTab: count > 0
    keyNavigationEnabled: true
    boundsBehavior: Flickable.StopAtBounds
    // A page of history is small; keeping it whole makes its height exact and its scrolling steady.
    cacheBuffer: 100000
    footer: Item { height: Theme.gap8 }
    Accessible.role: Accessible.List
    Accessible.name: "Messages"

    onMovementEnded: followsNewest = atYEnd
    onHeightChanged: Qt.callLater(settle, false)
    onContentHeightChanged: Qt.callLater(settle, true)
    onCountChanged: followsNewest = true
    onScreenChanged: followsNewest = true

    /// Few messages stand at the bottom, next to the input.
    function settle(grew) {
        topMargin = Math.max(Theme.gap16, height - contentHeight);
        if (followsNewest && grew)
            toNewest();
        else if (followsNewest)
            positionViewAtEnd();
    }
    /// Glides where there is a way to go; a chat that has just been opened stands there at once.
    function toNewest() {
        const end = originY + contentHeight + bottomMargin - height;
        if (screen.isLoading || end - contentY > height || end <= -topMargin) {
            positionViewAtEnd();
        } else if (end > contentY) {
            glide.to = end;
            glide.restart();
        }
    }
    function openMenu(row) {
        menu.active = true;
        menu.item.record = row.record;
        menu.item.popup(row, Math.max(Theme.gap16, row.width / 2 - 110), Math.min(row.height, 48));
    }
    function openMenuAtPointer(row) {
        menu.active = true;
        menu.item.record = row.record;
        menu.item.popup();
    }

    NumberAnimation {
        id: glide
        target: root
        property: "contentY"
        duration: Theme.panelDuration
        easing.type: Easing.OutCubic
        onStopped: if (root.followsNewest) root.positionViewAtEnd()
    }
    remove: Transition { NumberAnimation { property: "opacity"; to: 0; duration: Theme.panelDuration } }
    Keys.onPressed: event => {
        const wantsMenu = event.key === Qt.Key_Menu
            || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier));
        event.accepted = wantsMenu && currentItem !== null;
        if (event.accepted)
            openMenu(currentItem);
    }

    Loader {
        id: menu
        active: false
        sourceComponent: MessageMenu {
            screen: root.screen
        }
    }

    T.ScrollBar.vertical: ScrollThumb {
        onPressedChanged: if (!pressed) root.followsNewest = root.atYEnd
    }

    delegate: MessageRow {
        width: root.width
        columnWidth: root.columnWidth
        screen: root.screen
        count: root.count
        onMenuRequested: root.openMenuAtPointer(this)
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

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Qt.labs.qmlmodels
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The messages, the newest at the bottom, where the view begins: rows that come to stand above it move nothing
// in sight. A new message brings the view back to the newest.
ListView {
    id: root
    objectName: "messages"

    required property MessengerChatView screen
    readonly property int columnWidth: width - 2 * Theme.columnSide(width)
    /// The text of a bubble in which something is selected; null for none.
    property TextEdit selection: null
    property int countBefore: 0
    /// The view stays there whatever takes room from it, or gives it back.
    property bool atNewest: true

    /// The person turns to the input.
    signal writingWanted

    model: screen.rows
    verticalLayoutDirection: ListView.BottomToTop
    clip: true
    reuseItems: true
    cacheBuffer: Math.max(0, height)
    activeFocusOnTab: count > 0
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    currentIndex: -1
    boundsBehavior: Flickable.StopAtBounds
    header: Item { height: Theme.gap8 }
    footer: Item { height: Theme.gap16 }
    Accessible.role: Accessible.List
    Accessible.name: "Messages"

    onMovementStarted: glide.stop()
    onMovementEnded: atNewest = atYEnd
    onHeightChanged: Qt.callLater(stay)
    onCountChanged: Qt.callLater(showNewest)
    onActiveFocusChanged: if (activeFocus && currentIndex < 0) walkTo(0)

    function stay() {
        if (atNewest && !moving && !glide.running)
            positionViewAtBeginning();
    }
    /// Glides where there is a way to go; a chat that has just been opened stands there at once.
    function showNewest() {
        const added = count - countBefore;
        countBefore = count;
        if (added <= 0)
            return;
        atNewest = true;
        const end = originY + contentHeight - height;
        let way = Math.max(0, end - contentY);
        positionViewAtBeginning();
        if (screen.isLoading || height <= 0)
            return;
        for (let row = 0; row < added && way < height; ++row)
            way += itemAtIndex(row)?.height ?? 0;
        if (way > 0 && way < height && contentHeight > height) {
            glide.to = contentY;
            contentY -= way;
            glide.restart();
        }
    }
    function walkTo(row) {
        glide.stop();
        currentIndex = Math.max(0, Math.min(row, count - 1));
        positionViewAtIndex(currentIndex, ListView.Contain);
        // Its height is known now.
        forceLayout();
        positionViewAtIndex(currentIndex, ListView.Contain);
        atNewest = atYEnd;
        currentItem?.forceActiveFocus();
    }
    /// One page up for -1, down for 1.
    function page(direction) {
        glide.stop();
        const far = contentY + direction * height * 0.9;
        contentY = Math.max(originY, Math.min(far, originY + contentHeight - height));
        atNewest = atYEnd;
        const edge = direction < 0 ? contentY + Theme.gap8 : contentY + height - 2 * Theme.gap8;
        const row = indexAt(width / 2, edge);
        currentIndex = row >= 0 ? row : direction < 0 ? count - 1 : 0;
        currentItem?.forceActiveFocus();
    }
    /// What is read stays where it is while the row grows below it.
    function showMore(row) {
        const top = row.mapToItem(root, 0, 0).y;
        atNewest = false;
        screen.rows.showMore(row.index);
        forceLayout();
        contentY += row.mapToItem(root, 0, 0).y - top;
    }
    function select(text) {
        if (text.selectedText === "") {
            if (selection === text)
                selection = null;
            return;
        }
        if (selection && selection !== text)
            selection.deselect();
        selection = text;
    }
    /// Beneath the top of the row that the keyboard has chosen.
    function openMenu() {
        const x = Math.max(Theme.gap16, currentItem.width / 2 - 110);
        menuOf(currentIndex).popup(currentItem, x, Math.min(currentItem.height, 48));
    }
    /// Where it was pressed.
    function openMenuAt(point) {
        const place = contentItem.mapFromItem(null, point.scenePosition);
        const row = indexAt(width / 2, place.y);
        if (row < 0)
            return;
        writingWanted();
        menuOf(row).popup();
    }
    function menuOf(row) {
        menu.active = true;
        const made = menu.item as MessageMenu;
        made.record = screen.rows.record(row);
        made.pinned = (itemAtIndex(row) as MessageRow).pinned;
        return made;
    }

    NumberAnimation {
        id: glide
        target: root
        property: "contentY"
        duration: Theme.panelDuration
        easing.type: Easing.OutCubic
        onFinished: root.positionViewAtBeginning()
    }
    remove: Transition { NumberAnimation { property: "opacity"; to: 0; duration: Theme.panelDuration } }
    Keys.onPressed: event => {
        const wantsMenu = event.key === Qt.Key_Menu
            || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier));
        event.accepted = true;
        if (wantsMenu && currentItem)
            openMenu();
        else if (event.key === Qt.Key_Up)
            walkTo(currentIndex + 1);
        else if (event.key === Qt.Key_Down)
            walkTo(currentIndex - 1);
        else if (event.key === Qt.Key_Home)
            walkTo(count - 1);
        else if (event.key === Qt.Key_End)
            walkTo(0);
        else if (event.key === Qt.Key_PageUp)
            page(-1);
        else if (event.key === Qt.Key_PageDown)
            page(1);
        else if (event.key === Qt.Key_Escape)
            writingWanted();
        else
            event.accepted = false;
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: point => root.openMenuAt(point)
    }
    TapHandler {
        acceptedDevices: PointerDevice.TouchScreen
        onLongPressed: root.openMenuAt(point)
    }
    Loader {
        id: menu
        active: false
        sourceComponent: MessageMenu {
            screen: root.screen
        }
    }

    T.ScrollBar.vertical: ScrollThumb {
        onPressedChanged: if (!pressed) root.atNewest = root.atYEnd
    }

    delegate: DelegateChooser {
        role: "kind"

        DelegateChoice {
            roleValue: "sticker"
            delegate: MessageRow {
                id: sticker
                screen: root.screen
                onTapped: root.writingWanted()

                StickerBubble { row: sticker }
            }
        }
        DelegateChoice {
            roleValue: "poll"
            delegate: MessageRow {
                id: poll
                screen: root.screen
                onTapped: root.writingWanted()

                PollBubble { row: poll }
            }
        }
        // Whatever has nothing of its own is read.
        DelegateChoice {
            delegate: MessageRow {
                id: text
                screen: root.screen
                onTapped: root.writingWanted()

                MessageBubble {
                    row: text
                    onMoreRequested: root.showMore(text)
                    onSelected: content => root.select(content)
                }
            }
        }
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

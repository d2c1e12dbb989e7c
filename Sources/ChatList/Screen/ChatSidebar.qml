// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// Everything to the left of the open chat. All its rows, fixed ones and chats, are walked as one list.
FocusScope {
    id: root

    required property MessengerChatListView screen

    function focusSearch() {
        search.forceActiveFocus();
        search.selectAll();
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.surface
    }
    Item {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 56

        PlainText {
            anchors {
                left: parent.left; leftMargin: Theme.gap16
                right: directDelivery.left; rightMargin: Theme.gap8
                verticalCenter: parent.verticalCenter
            }
            text: "OrvaneTalk"
            font: Theme.titleFont
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        SymbolButton {
            id: directDelivery
            anchors { right: parent.right; rightMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
            symbol: "link"
            text: "P2P"
            onClicked: root.screen.showP2P = true
        }
    }
    SearchField {
        id: search
        anchors {
            left: parent.left; leftMargin: Theme.gap16
            right: parent.right; rightMargin: Theme.gap16
            top: header.bottom
        }
        placeholderText: "Search..."
        text: root.screen.searchText
        onTextEdited: root.screen.searchText = text
        Keys.onDownPressed: list.walk(0, -1)
    }
    FolderBar {
        id: folderBar
        anchors { left: parent.left; right: parent.right; top: search.bottom; topMargin: Theme.gap4 }
        folders: root.screen.folders
    }
    ListView {
        id: list

        readonly property FixedRows fixedRows: headerItem as FixedRows
        readonly property int page: Math.max(1, Math.floor(height / Theme.rowHeight) - 1)
        /// Why there are no chats; empty while there are some, or may be soon.
        readonly property string emptiness: count > 0 || root.screen.isLoading ? ""
            : root.screen.searchText === "" ? root.screen.folders.activeFolderId === "" ? "No chats yet" : "No chats in this folder yet"
            : root.screen.search.searchesRunning > 0 || root.screen.search.searchResults.count > 0 ? "" : "Nothing found"
        /// It came by Tab, or its row went away. Only a row shows it, and has a menu.
        readonly property bool holdsFocusItself: Window.activeFocusItem === list
        property real lastOrigin: 0

        function giveFocusToRow() {
            if (!holdsFocusItself || root.screen.isLoading)
                return;
            // Nobody asked for the list to scroll.
            if (currentIndex < 0 && count > 0 && headerItem.height + Theme.rowHeight <= height)
                currentIndex = 0;
            walk(currentIndex < 0 ? -Infinity : 0);
        }

        /// Goes `step` rows on from the row that has the focus; `from` tells another row to count from.
        function walk(step, from) {
            const fixed = fixedRows.rows();
            const focused = fixed.findIndex(row => row.activeFocus);
            const here = from !== undefined ? from + 1 : focused >= 0 ? focused : fixed.length + currentIndex;
            const there = Math.max(0, Math.min(here + step, fixed.length + count - 1));
            if (there < fixed.length) {
                positionViewAtBeginning();
                fixed[there].forceActiveFocus();
            } else {
                currentIndex = there - fixed.length;
                positionViewAtIndex(currentIndex, ListView.Contain);
                currentItem?.forceActiveFocus();
            }
        }

        anchors { left: parent.left; right: parent.right; top: folderBar.bottom; bottom: footer.top }
        model: root.screen.sortedChats
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        Accessible.role: Accessible.List
        Accessible.name: "Chats"
        T.ScrollBar.vertical: ScrollThumb {}

        // What comes to stand over the chats later, channels or search results, must not come out of sight.
        onOriginYChanged: {
            if (contentY <= lastOrigin)
                positionViewAtBeginning();
            lastOrigin = originY;
        }
        Keys.onUpPressed: walk(-1)
        Keys.onDownPressed: walk(1)
        Keys.onPressed: event => {
            const steps = {[Qt.Key_Home]: -Infinity, [Qt.Key_End]: Infinity, [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page};
            event.accepted = event.key in steps;
            if (event.accepted)
                walk(steps[event.key]);
        }
        onHoldsFocusItselfChanged: Qt.callLater(giveFocusToRow)
        onCountChanged: Qt.callLater(giveFocusToRow)

        header: FixedRows {
            width: list.width
            screen: root.screen
        }
        footer: Item {
            width: list.width
            height: list.emptiness ? 160 : 0

            EmptyState {
                anchors.centerIn: parent
                width: parent.width - 2 * Theme.gap16
                visible: list.emptiness
                symbol: root.screen.searchText ? "magnifyingglass" : "message.fill"
                title: list.emptiness
            }
        }
        delegate: ChatRow {
            id: row

            width: list.width
            screen: root.screen
            onMenuWanted: (x, y) => menu.open(row, x, y)
        }
    }
    Loader {
        id: menu

        property string chatID

        function open(row, x, y) {
            // Made anew, the menu knows what is so now.
            active = false;
            chatID = row.chatID;
            active = true;
            (item as ChatRowMenu).popup(row, x, y);
        }

        active: false
        sourceComponent: ChatRowMenu {
            screen: root.screen
            chatID: menu.chatID
        }
    }
    Spinner {
        anchors.horizontalCenter: list.horizontalCenter
        anchors.bottom: list.bottom
        anchors.bottomMargin: Theme.gap32
        running: list.count === 0 && (root.screen.isLoading || root.screen.search.searchesRunning > 0)
    }
    Item {
        id: footer
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 52

        Rectangle {
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 1
            color: Theme.divider
        }
        SymbolButton {
            anchors { left: parent.left; leftMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
            symbol: "person.crop.circle.badge.plus"
            text: "Contacts"
            onClicked: root.screen.showContacts = true
        }
        SymbolButton {
            anchors { right: newGroup.left; rightMargin: Theme.gap8; verticalCenter: parent.verticalCenter }
            symbol: "megaphone.fill"
            text: "New Channel"
            onClicked: root.screen.channels.showNewChannel = true
        }
        SymbolButton {
            id: newGroup
            anchors { right: parent.right; rightMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
            symbol: "person.3.fill"
            text: "New Group"
            onClicked: root.screen.newGroup.showNewGroup = true
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// One chat of the list.
Item {
    id: root

    required property MessengerChatListView screen
    required property int index
    required property string chatID
    required property string symbol
    required property string name
    required property string preview
    required property string time
    required property int unreadCount
    required property bool pinned
    required property string hueID
    required property bool online
    required property string spoken

    readonly property bool isOpen: screen.selectedChatID === chatID
    readonly property bool unread: unreadCount > 0
    /// Of a chat that is no longer shown, kept for another.
    property bool pooled: false
    /// Its menu is wanted at this place of the row.
    signal menuWanted(real x, real y)

    function open() {
        ListView.view.currentIndex = index;
        screen.selectedChatID = chatID;
    }

    function wantMenu(x, y) {
        ListView.view.currentIndex = index;
        forceActiveFocus();
        menuWanted(x, y);
    }

    height: Theme.rowHeight
    ListView.onPooled: {
        pooled = true;
        focus = false;
    }
    ListView.onReused: pooled = false
    Keys.onReturnPressed: open()
    Keys.onEnterPressed: open()
    Keys.onSpacePressed: open()
    Keys.onMenuPressed: wantMenu(Theme.rowHeight, Theme.rowHeight / 2)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier) {
            wantMenu(Theme.rowHeight, Theme.rowHeight / 2);
            event.accepted = true;
        }
    }
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.ignored: pooled
    Accessible.focusable: true
    Accessible.selected: isOpen
    Accessible.onPressAction: root.open()

    Rectangle {
        anchors { fill: parent; leftMargin: Theme.gap8; rightMargin: Theme.gap8; topMargin: 1; bottomMargin: 1 }
        radius: Theme.controlRadius
        // Most rows have nothing to draw here, and a scene with less in it is drawn sooner.
        visible: color.a > 0 || root.activeFocus
        color: root.isOpen ? Theme.selection : tap.pressed ? Theme.pressed : hover.hovered ? Theme.raised : "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
    }
    HoverHandler { id: hover }
    TapHandler {
        id: tap
        onTapped: root.open()
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: point => root.wantMenu(point.position.x, point.position.y)
    }
    Avatar {
        id: avatar
        anchors { left: parent.left; leftMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        hueId: root.hueID
        name: root.name
        symbol: root.symbol
        online: root.online
        ground: Theme.surface
    }
    // A row that comes into view is filled anew: every text has one width, so that it is laid out once.
    PlainText {
        id: title
        anchors { left: avatar.right; leftMargin: Theme.gap12 }
        y: Math.round(root.preview ? parent.height / 2 - height : (parent.height - height) / 2)
        width: date.x - x - Theme.gap8
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.name
        font: Theme.strongBodyFont
        color: root.unread || root.isOpen ? Theme.text : Theme.dimmed
        Accessible.ignored: true
    }
    PlainText {
        id: date
        anchors { right: parent.right; rightMargin: Theme.gap16; baseline: title.baseline }
        text: root.time
        font: Theme.captionFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    PlainText {
        id: line
        anchors { left: title.left; top: parent.verticalCenter; topMargin: 2 }
        width: parent.width - x - Theme.gap16 - (root.unread ? badge.width + Theme.gap8 : root.pinned ? pin.width + Theme.gap8 : 0)
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.preview
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    CountBadge {
        id: badge
        anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: line.verticalCenter }
        count: root.unreadCount
    }
    Symbol {
        id: pin
        anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: line.verticalCenter }
        visible: root.pinned && !root.unread
        name: "pin.fill"
        size: 16
        color: Theme.faint
    }
}

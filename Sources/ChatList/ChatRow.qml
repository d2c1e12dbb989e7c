import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

// One chat of the list.
Item {
    id: root

    required property messengerChat record
    required property int index
    required property MessengerChatListView screen

    readonly property bool isOpen: screen.selectedChatID === record.id
    readonly property bool pinned: {
        void screen.pinsRevision;
        return screen.isPinned(record.id);
    }
    readonly property string peer: screen.peerId(record)
    readonly property string name: {
        void screen.contactsRevision;
        return screen.displayName(record);
    }
    readonly property bool online: {
        void screen.contactsRevision;
        return peer !== "" && screen.isOnline(peer);
    }
    readonly property bool unread: record.unreadCount > 0

    function open() {
        ListView.view.currentIndex = index;
        screen.selectedChatID = record.id;
    }

    function openMenu(x, y) {
        ListView.view.currentIndex = index;
        forceActiveFocus();
        menu.active = true;
        (menu.item as ChatRowMenu).popup(root, x, y);
    }

    height: Theme.rowHeight
    ListView.onReused: menu.active = false
    Keys.onReturnPressed: open()
    Keys.onEnterPressed: open()
    Keys.onSpacePressed: open()
    Keys.onMenuPressed: openMenu(Theme.rowHeight, Theme.rowHeight / 2)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && event.modifiers & Qt.ShiftModifier) {
            openMenu(Theme.rowHeight, Theme.rowHeight / 2);
            event.accepted = true;
        }
    }
    Accessible.role: Accessible.ListItem
    Accessible.name: {
        void screen.contactsRevision;
        return screen.spokenChat(record);
    }
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
        onTapped: point => root.openMenu(point.position.x, point.position.y)
    }
    Loader {
        id: menu
        active: false
        sourceComponent: ChatRowMenu {
            screen: root.screen
            chatID: root.record.id
            pinned: root.pinned
        }
    }
    Avatar {
        id: avatar
        anchors { left: parent.left; leftMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        hueId: root.peer || root.record.id
        name: root.name
        symbol: root.record.type === "group" ? "person.3.fill" : root.record.type === "channel" ? "megaphone.fill" : ""
        online: root.online
        ground: Theme.surface
    }
    PlainText {
        id: title
        anchors {
            left: avatar.right; leftMargin: Theme.gap12
            right: time.left; rightMargin: Theme.gap8
        }
        y: Math.round(preview.text ? parent.height / 2 - height : (parent.height - height) / 2)
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.name
        font: root.unread ? Theme.strongBodyFont : Theme.bodyFont
        color: root.unread || root.isOpen ? Theme.text : Theme.dimmed
        Accessible.ignored: true
    }
    PlainText {
        id: time
        anchors { right: parent.right; rightMargin: Theme.gap16; baseline: title.baseline }
        text: root.record.lastMessage ? DisplayTimes.brief(root.record.lastMessage.timestamp) : ""
        font: Theme.captionFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    PlainText {
        id: preview
        anchors {
            left: title.left
            right: badge.visible ? badge.left : parent.right
            rightMargin: badge.visible ? Theme.gap8 : Theme.gap16
            top: parent.verticalCenter
            topMargin: 2
        }
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.record.lastMessage ? root.screen.preview(root.record) : ""
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    CountBadge {
        id: badge
        anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: preview.verticalCenter }
        count: root.record.unreadCount
    }
}

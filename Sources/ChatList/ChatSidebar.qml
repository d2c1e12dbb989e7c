import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// Everything to the left of the open chat.
FocusScope {
    id: root

    required property MessengerChatListView screen

    Rectangle {
        anchors.fill: parent
        color: Theme.surface
    }
    Item {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: Theme.rowHeight

        PlainText {
            anchors {
                left: parent.left; leftMargin: Theme.gap16
                right: parent.right; rightMargin: Theme.gap16
                verticalCenter: parent.verticalCenter
            }
            text: "OrvaneTalk"
            font: Theme.titleFont
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: 1
            color: Theme.divider
        }
    }
    ListView {
        id: list
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: parent.bottom }
        model: root.screen.chats
        clip: true
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        Accessible.role: Accessible.List
        Accessible.name: "Chats"

        T.ScrollBar.vertical: ScrollThumb {}

        Keys.onReturnPressed: open()
        Keys.onEnterPressed: open()
        Keys.onSpacePressed: open()

        function open() {
            if (currentItem)
                (currentItem as ChatRow).open();
        }

        delegate: ChatRow {
            width: list.width
            screen: root.screen
        }
    }
    Spinner {
        anchors.centerIn: list
        running: root.screen.isLoading && list.count === 0
    }
}

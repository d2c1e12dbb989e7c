import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The list of chats beside the open chat.
FocusScope {
    id: root

    required property MessengerChatListView screen
    /// Remembered by the window.
    property int listWidth: 320

    Component.onCompleted: screen.loadData()

    ChatSidebar {
        id: sidebar
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: root.listWidth
        screen: root.screen
        focus: !detail.active
    }
    PaneDivider {
        id: divider
        anchors { top: parent.top; bottom: parent.bottom; left: sidebar.right }
        value: root.listWidth
        from: 260
        to: 420
        onMoved: newValue => root.listWidth = newValue
    }
    EmptyState {
        visible: !detail.active
        anchors.verticalCenter: parent.verticalCenter
        x: divider.x + divider.width + (parent.width - divider.x - divider.width - width) / 2
        width: 320
        symbol: "message.fill"
        title: "OrvaneTalk"
        hint: "AI messenger. Pick a chat."
    }
    Loader {
        id: detail
        anchors { left: divider.right; right: parent.right; top: parent.top; bottom: parent.bottom }
        active: root.screen.openChat !== null
        focus: active
        sourceComponent: ChatScreen {
            focus: true
            screen: root.screen.openChat
        }
    }
}

import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// The open chat: header, messages, input.
FocusScope {
    id: root

    required property MessengerChatView screen

    onScreenChanged: input.forceActiveFocus()

    ChatHeader {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        screen: root.screen
    }
    MessageList {
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: input.top }
        screen: root.screen
    }
    MessengerInputBar {
        id: input
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        focus: true
        text: root.screen.inputText
        onEdited: newText => root.screen.inputText = newText
        onSend: root.screen.sendMessage()
    }
}

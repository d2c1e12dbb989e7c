// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// The open chat: header, strips over the messages, messages, strips over the input, input. However many strips
// there are, the messages keep some room.
FocusScope {
    id: root

    required property MessengerChatView screen
    readonly property int room: height - header.height - input.height

    Component.onCompleted: input.write()

    ChatHeader {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        screen: root.screen
        z: 1
    }
    StripStack {
        id: top
        anchors { left: parent.left; right: parent.right; top: header.bottom }
        tallest: Math.round(root.room * 0.35)

        PinnedPanel {
            width: parent.width
            pins: root.screen.pins
        }
        ContextBanner {
            width: parent.width
            assistant: root.screen.assistant
            onPicked: question => root.screen.inputText = question
        }
        SummaryBanner {
            width: parent.width
            assistant: root.screen.assistant
        }
    }
    MessageList {
        id: messages
        anchors { left: parent.left; right: parent.right; top: top.bottom; bottom: bottom.top }
        screen: root.screen
        onWritingWanted: input.write()
    }
    StripStack {
        id: bottom
        anchors { left: parent.left; right: parent.right; bottom: input.top }
        tallest: Math.round(root.room * 0.5)
        keepsEnd: true

        TypingIndicator {
            width: parent.width
            line: root.screen.typingLine
        }
        SmartReplyBar {
            width: parent.width
            assistant: root.screen.assistant
            onPicked: reply => root.screen.inputText = reply
        }
        AIAgentResultView {
            width: parent.width
            assistant: root.screen.assistant
        }
        AIPanel {
            width: parent.width
            assistant: root.screen.assistant
        }
        Loader {
            width: parent.width
            height: active ? implicitHeight : 0
            active: root.screen.showStickerPicker
            sourceComponent: StickerPicker {
                onSelect: emoji => root.screen.sendSticker(emoji)
                Component.onCompleted: forceActiveFocus()
                Keys.onEscapePressed: {
                    root.screen.showStickerPicker = false;
                    input.write();
                }
            }
        }
        ReplyBanner {
            width: parent.width
            screen: root.screen
        }
    }
    MessengerInputBar {
        id: input
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        focus: true
        text: root.screen.inputText
        isInputFocused: root.screen.isInputFocused
        onFocusTold: focused => {
            root.screen.isInputFocused = focused;
            if (focused)
                messages.currentIndex = -1;
        }
        onCopyWanted: messages.selection?.copy()
        onEdited: newText => root.screen.inputText = newText
        onSend: root.screen.sendMessage()
        onSticker: root.screen.showStickerPicker = !root.screen.showStickerPicker
        onPoll: root.screen.showPollCreator = true
        onAiToggle: root.screen.showAIPanel = !root.screen.showAIPanel
        onEditLast: root.screen.editLastOwnMessage()
        onEscaped: root.screen.cancelReply()
    }

    ChatSheets {
        screen: root.screen
        onDialogClosed: input.write()
    }
}

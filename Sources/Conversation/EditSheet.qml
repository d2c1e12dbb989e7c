import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

Sheet {
    id: root

    required property MessengerChatView screen

    title: "Edit Message"
    keepsText: true
    width: parent ? Math.min(420, parent.width - 2 * Theme.gap32) : 420
    onOpened: field.forceActiveFocus()

    FormField {
        id: field
        width: parent.width
        focus: true
        placeholderText: "Message"
        text: root.screen.editText
        onTextChanged: root.screen.editText = text
        onAccepted: root.screen.saveEdit()
        Keys.onEscapePressed: root.close()
    }
    buttons: PrimaryButton {
        text: "Save"
        onClicked: root.screen.saveEdit()
    }
}

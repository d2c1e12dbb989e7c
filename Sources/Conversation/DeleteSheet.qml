import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

Sheet {
    id: root

    signal confirmed

    title: "Delete Message?"
    width: parent ? Math.min(360, parent.width - 2 * Theme.gap32) : 360
    onOpened: confirm.forceActiveFocus()

    PlainText {
        width: parent.width
        text: "This action cannot be undone."
        color: Theme.dimmed
        wrapMode: Text.Wrap
    }
    buttons: PrimaryButton {
        id: confirm
        text: "Delete"
        onClicked: root.confirmed()
    }
}

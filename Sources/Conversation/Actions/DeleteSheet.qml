// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

Sheet {
    id: root

    signal confirmed

    title: "Delete Message?"
    width: parent ? Math.min(360, parent.width - 2 * Theme.gap32) : 360
    // What can't be undone isn't what Enter does.
    onOpened: focusWayOut()

    PlainText {
        width: parent.width
        text: "This action cannot be undone."
        color: Theme.dimmed
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    buttons: PrimaryButton {
        text: "Delete"
        dangerous: true
        onClicked: root.confirmed()
    }
}

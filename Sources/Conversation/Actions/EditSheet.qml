// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

Sheet {
    id: root

    required property MessageEditing editing

    title: "Edit Message"
    keepsText: true
    width: parent ? Math.min(520, parent.width - 2 * Theme.gap32) : 520
    onOpened: writing.write()

    WritingField {
        id: writing
        width: parent.width
        height: implicitHeight
        prompt: "Message"
        // As tall as the window lets a sheet be, less its title and buttons.
        mostHeight: root.parent ? root.parent.height - 260 : 480
        text: root.editing.editText
        onEdited: newText => root.editing.editText = newText
        onAccepted: root.editing.save()
        onEscaped: root.close()
    }
    FullNotice {
        width: parent.width
        field: writing
    }
    buttons: PrimaryButton {
        text: "Save"
        onClicked: root.editing.save()
    }
}

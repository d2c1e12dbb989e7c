// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

Sheet {
    id: root

    required property Folders folders

    title: "Новая папка"
    closeText: "Отмена"
    keepsText: name.text !== ""
    width: parent ? Math.min(360, parent.width - 2 * Theme.gap32) : 360

    FormField {
        id: name
        width: parent.width
        focus: true
        placeholderText: "Название"
        text: root.folders.newFolderName
        onTextChanged: root.folders.newFolderName = text
        onAccepted: root.folders.createFolder()
    }
    buttons: PrimaryButton {
        text: "Создать"
        enabled: name.text.trim() !== ""
        onClicked: root.folders.createFolder()
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Dialogs
import OrvaneTalk.Conversation

// Where a conversation is saved.
FileDialog {
    required property MessengerChatView screen
    required property string text

    fileMode: FileDialog.SaveFile
    acceptLabel: "Save"
    nameFilters: ["Plain text (*.md *.txt)"]
    currentFolder: screen.exportFolder()
    currentFile: screen.exportFolder() + "/chat.md"
    onAccepted: screen.saveExport(selectedFile, text)
    Component.onCompleted: open()
}

import QtQuick.Dialogs

// Where a conversation is saved.
FileDialog {
    fileMode: FileDialog.SaveFile
    acceptLabel: "Save"
    nameFilters: ["Plain text (*.md *.txt)"]
}

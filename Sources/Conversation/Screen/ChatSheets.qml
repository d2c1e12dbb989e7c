// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// What opens over the chat, each made when it is asked for.
Item {
    id: root

    required property MessengerChatView screen
    /// A dialog of the desktop has gone, which gives the keyboard back to nobody.
    signal dialogClosed

    SheetLoader {
        shown: root.screen.showPollCreator
        sourceComponent: PollCreatorSheet {
            chatID: root.screen.chat.id
            currentUserID: root.screen.currentUserID
            onCreated: poll => root.screen.sendPoll(poll)
            onClosed: root.screen.showPollCreator = false
        }
    }
    SheetLoader {
        shown: root.screen.showEditAlert
        sourceComponent: EditSheet {
            editing: root.screen.editing
            onClosed: root.screen.showEditAlert = false
        }
    }
    SheetLoader {
        shown: root.screen.showForwardPicker
        sourceComponent: ForwardPickerSheet {
            forwarding: root.screen.forwarding
            onClosed: root.screen.showForwardPicker = false
        }
    }
    SheetLoader {
        shown: root.screen.deletingMessage !== undefined
        sourceComponent: DeleteSheet {
            onConfirmed: root.screen.editing.performDelete()
            onClosed: root.screen.editing.keep()
        }
    }
    Loader {
        id: exporter
    }
    Connections {
        target: exporter.item as ExportDialog
        function onVisibleChanged() {
            if (!(exporter.item as ExportDialog).visible)
                root.dialogClosed();
        }
    }
    Connections {
        target: root.screen
        function onExportRequested(text) {
            exporter.setSource("ExportDialog.qml", { screen: root.screen, text: text });
        }
    }
}

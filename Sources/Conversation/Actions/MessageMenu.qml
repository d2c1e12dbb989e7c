// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// What can be done with one message.
ContextMenu {
    id: root

    required property MessengerChatView screen
    /// As it was when the menu opened.
    property messengerMessage record
    property bool pinned: false
    readonly property bool own: record.senderID === screen.currentUserID

    Instantiator {
        model: root.screen.linksIn(root.record)
        delegate: ContextMenuItem {
            required property string modelData

            text: "Open " + modelData
            symbol: "link"
            onChosen: root.screen.openLink(modelData)
        }
        onObjectAdded: (index, object) => root.insertItem(index, object)
        onObjectRemoved: (index, object) => root.removeItem(object)
    }
    ContextMenuItem {
        text: "Copy"
        symbol: "doc.on.doc"
        onChosen: root.screen.copyMessage(root.record)
    }
    ContextMenuItem {
        visible: root.own
        height: visible ? implicitHeight : 0
        text: "Edit"
        symbol: "pencil"
        onChosen: root.screen.editMessage(root.record)
    }
    ContextMenuItem {
        visible: root.own
        height: visible ? implicitHeight : 0
        text: "Delete"
        symbol: "trash"
        dangerous: true
        onChosen: root.screen.deleteMessage(root.record)
    }
    ContextMenuItem {
        text: "Forward"
        symbol: "arrowshape.turn.up.right"
        onChosen: root.screen.pickForward(root.record)
    }
    ContextMenuItem {
        text: root.record.isStarred ? "Unstar" : "Star"
        symbol: root.record.isStarred ? "star.fill" : "star"
        onChosen: root.screen.toggleStar(root.record)
    }
    ContextMenuItem {
        text: root.screen.translatingMsgID === root.record.id ? "Translating..." : "Translate"
        symbol: "globe"
        onChosen: root.screen.translateAction(root.record)
    }
    ContextMenuItem {
        text: "Reply"
        symbol: "arrowshape.turn.up.left"
        onChosen: root.screen.replyTo(root.record)
    }
    ContextMenuItem {
        text: root.pinned ? "Unpin" : "Pin"
        symbol: root.pinned ? "pin.slash" : "pin"
        onChosen: root.screen.pinUnpinMessage(root.record)
    }
    ContextMenu {
        title: "React"
        implicitWidth: 120

        Repeater {
            model: ["👍", "❤️", "😂", "🔥", "👏"]
            delegate: ContextMenuItem {
                required property string modelData

                implicitWidth: 112
                text: modelData
                onChosen: root.screen.reactToMessage(root.record, modelData)
            }
        }
    }
}

import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Who the open chat is with.
Item {
    id: root

    required property MessengerChatView screen

    implicitHeight: Theme.rowHeight

    Avatar {
        id: avatar
        anchors { left: parent.left; leftMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        hueId: root.screen.chat.type === "direct" ? root.screen.peerId : root.screen.chat.id
        name: root.screen.title
        symbol: root.screen.chat.type === "group" ? "person.3.fill"
              : root.screen.chat.type === "channel" ? "megaphone.fill" : ""
    }
    Column {
        anchors {
            left: avatar.right; leftMargin: Theme.gap12
            right: badges.left; rightMargin: Theme.gap12
            verticalCenter: parent.verticalCenter
        }
        PlainText {
            width: parent.width
            text: root.screen.title
            font: Theme.headingFont
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        PlainText {
            width: parent.width
            visible: root.screen.chat.type !== "direct"
            text: root.screen.chat.participants.length === 1 ? "1 member"
                : root.screen.chat.participants.length + " members"
            font: Theme.secondaryFont
            color: Theme.dimmed
        }
    }
    Row {
        id: badges
        anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        spacing: Theme.gap8

        ExperimentBadge {
            visible: root.screen.isEncrypting
            text: "CRYPTO EXP"
            onClicked: fingerprint.shown = true
        }
        ExperimentBadge {
            visible: root.screen.isEncrypting && root.screen.chat.zkMode
            text: "ZK EXP"
            onClicked: fingerprint.shown = true
        }
    }
    SheetLoader {
        id: fingerprint
        sourceComponent: FingerprintSheet {
            fingerprint: root.screen.fingerprint
            onClosed: fingerprint.shown = false
        }
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 1
        color: Theme.divider
    }
}

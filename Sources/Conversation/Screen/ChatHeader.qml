// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Who the open chat is with.
Item {
    id: root

    required property MessengerChatView screen
    /// A group that was just made does not list its maker yet.
    readonly property int members: screen.chat.participants.length
        + (screen.chat.participants.includes(screen.currentUserID) ? 0 : 1)

    implicitHeight: Theme.rowHeight

    Avatar {
        id: avatar
        anchors { left: parent.left; leftMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        hueId: root.screen.hueId
        name: root.screen.title
        symbol: root.screen.chat.symbol
    }
    Column {
        anchors {
            left: avatar.right; leftMargin: Theme.gap12
            right: badges.left; rightMargin: Theme.gap12
            verticalCenter: parent.verticalCenter
        }
        PlainText {
            width: parent.width
            text: root.screen.activeBotName ?? root.screen.title
            font: Theme.headingFont
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        PlainText {
            width: parent.width
            visible: root.screen.chat.type !== "direct"
            text: root.members === 1 ? "1 member" : root.members + " members"
            font: Theme.secondaryFont
            color: Theme.dimmed
        }
    }
    Row {
        id: badges
        anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
        spacing: Theme.gap8

        SymbolButton {
            id: summary
            anchors.verticalCenter: parent.verticalCenter
            symbol: "text.and.command.macwindow"
            text: "Summary"
            onClicked: {
                periods.active = true;
                (periods.item as SummaryMenu).popup(summary, 0, summary.height);
            }

            Loader {
                id: periods
                active: false
                sourceComponent: SummaryMenu {
                    assistant: root.screen.assistant
                }
            }
        }
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

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

// What stands over the chats: the assistant, the user's own space, starred messages, channels, search results.
Column {
    id: root

    required property MessengerChatListView screen

    /// The rows that are there, from top to bottom.
    function rows() {
        return Array.from(children).filter(item => item.sidebarRow === true && item.visible);
    }

    SidebarRow {
        symbol: "sparkles"
        title: "Orvane AI"
        subtitle: "Your AI assistant"
        isOpen: root.screen.openChat !== null && root.screen.isAssistantChat(root.screen.selectedChatID)
        onActivated: root.screen.openAssistant()
    }
    SidebarRow {
        symbol: "bookmark.fill"
        title: "Saved Messages"
        subtitle: "Your personal space"
        isOpen: root.screen.selectedChatID === root.screen.savedChatID
                || root.screen.selectedChatID === root.screen.localSavedChatID
        onActivated: root.screen.openSavedChat()
    }
    SidebarRow {
        visible: root.screen.starredCount > 0
        symbol: "star.fill"
        title: "Starred Messages"
        subtitle: root.screen.starredCount + " starred"
        onActivated: root.screen.showStarred = true
    }
    SidebarHeading {
        visible: channels.count > 0
        text: "Channels"

        SymbolButton {
            symbol: "plus"
            symbolSize: 16
            text: "New channel"
            onClicked: root.screen.channels.showNewChannel = true
        }
    }
    Repeater {
        id: channels
        model: root.screen.channels.channels
        delegate: SidebarRow {
            required property messengerChat record

            compact: true
            symbol: "megaphone.fill"
            tint: Theme.dimmed
            title: record.title?.trim() || "Channel"
            subtitle: "Channel"
            isOpen: root.screen.selectedChatID === record.id
            onActivated: root.screen.selectedChatID = record.id
        }
    }
    SidebarHeading {
        visible: results.count > 0
        text: "Search results"
    }
    Repeater {
        id: results
        model: root.screen.search.searchResults
        delegate: SidebarRow {
            required property searchHit record

            symbol: "magnifyingglass"
            tint: Theme.dimmed
            title: record.senderName
            subtitle: record.line
            onActivated: root.screen.selectedChatID = record.chatID
        }
    }
    Item {
        width: root.width
        height: Theme.gap8 + 1

        Rectangle {
            anchors.centerIn: parent
            width: parent.width - 2 * Theme.gap16
            height: 1
            color: Theme.divider
        }
    }
}

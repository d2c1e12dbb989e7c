// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Application
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

Window {
    id: root

    required property OrvaneTalkApp app

    width: 900
    height: 650
    minimumWidth: app.chatList ? 800 : 420
    minimumHeight: 600
    visible: true
    title: "OrvaneTalk"
    color: Theme.background
    // For the toolkit's own dialogs, where the desktop has none.
    palette {
        window: Theme.background
        windowText: Theme.text
        base: Theme.surface
        alternateBase: Theme.raised
        text: Theme.text
        button: Theme.raised
        buttonText: Theme.text
        brightText: Theme.text
        placeholderText: Theme.dimmed
        highlight: Theme.accent
        highlightedText: Theme.onAccent
        light: Theme.raised
        midlight: Theme.pressed
        mid: Theme.divider
        dark: Theme.dimmed
        shadow: Theme.faint
    }
    // The program may go on without its window: a chat that nobody sees isn't open, and its messages count.
    onClosing: {
        if (app.chatList)
            app.chatList.selectedChatID = "";
    }

    Binding {
        target: Theme
        property: "reducedMotion"
        value: root.app.reducedMotion
    }
    Loader {
        anchors.fill: parent
        active: root.app.auth !== null
        focus: active
        sourceComponent: AuthScreen {
            focus: true
            screen: root.app.auth
        }
    }
    Loader {
        anchors.fill: parent
        active: root.app.chatList !== null
        focus: active
        sourceComponent: ChatListScreen {
            focus: true
            screen: root.app.chatList
            listWidth: root.app.listWidth
            onListWidthChanged: root.app.listWidth = listWidth
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

Sheet {
    id: root

    required property Channels channels

    title: "New Channel"
    keepsText: name.text !== ""
    width: parent ? Math.min(360, parent.width - 2 * Theme.gap32) : 360

    FormField {
        id: name
        width: parent.width
        focus: true
        placeholderText: "Channel name"
        text: root.channels.channelName
        onTextChanged: root.channels.channelName = text
        onAccepted: root.channels.createChannel()
    }
    buttons: PrimaryButton {
        text: "Create"
        enabled: name.text.trim() !== ""
        onClicked: root.channels.createChannel()
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface
import OrvaneTalk.Model

Sheet {
    id: root

    required property MessengerChatListView screen
    readonly property NewGroup group: screen.newGroup

    title: "New Group"
    keepsText: name.text !== "" || remote.text !== ""

    FormField {
        id: name
        width: parent.width
        focus: true
        placeholderText: "Group name"
        text: root.group.groupName
        onTextChanged: root.group.groupName = text
        onAccepted: root.group.createGroup()
    }
    PlainText {
        topPadding: Theme.gap4
        text: "Participants"
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    ListView {
        id: people
        x: -Theme.gap8
        width: parent.width + 2 * Theme.gap8
        height: Math.min(contentHeight, 260)
        clip: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Participants"
        model: root.screen.people
        delegate: ParticipantRow {
            required property messengerUser modelData

            width: people.width
            user: modelData
            chosen: root.group.groupParticipants.includes(modelData.id)
            onToggled: root.group.toggleParticipant(modelData.id)
        }
    }
    FormField {
        id: remote
        width: parent.width
        placeholderText: "🌐 Remote: @user:server"
        text: root.group.groupRemoteMX
        onTextChanged: root.group.groupRemoteMX = text
    }
    SwitchRow {
        visible: root.group.offersZk
        width: parent.width
        text: "🔒 Zero-Knowledge (experimental)"
        checked: root.group.groupZkMode
        onToggled: root.group.groupZkMode = checked
    }
    buttons: PrimaryButton {
        text: "Create"
        onClicked: root.group.createGroup()
    }
}

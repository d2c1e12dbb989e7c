// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// A person with a line about them, and what can be done with them.
Item {
    id: root

    required property listedPerson record
    property string subtitle
    default property alias buttons: actions.data

    height: 56
    Accessible.role: Accessible.ListItem
    Accessible.name: subtitle ? record.name + ", " + subtitle : record.name
    Accessible.ignored: !visible
    Accessible.focusable: true
    Accessible.focused: activeFocus

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: hover.hovered ? Theme.surface : "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
    }
    HoverHandler { id: hover }
    TapHandler { onTapped: root.forceActiveFocus() }
    Avatar {
        id: avatar
        x: Theme.gap8
        anchors.verticalCenter: parent.verticalCenter
        hueId: root.record.userID
        name: root.record.name
        online: root.record.status === "online"
    }
    PlainText {
        id: name
        anchors { left: avatar.right; leftMargin: Theme.gap12; right: actions.left; rightMargin: Theme.gap12 }
        y: Math.round(root.subtitle ? parent.height / 2 - height : (parent.height - height) / 2)
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.record.name
        Accessible.ignored: true
    }
    PlainText {
        anchors { left: name.left; right: name.right; top: parent.verticalCenter; topMargin: 2 }
        visible: root.subtitle
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.subtitle
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
    Row {
        id: actions
        anchors { right: parent.right; rightMargin: Theme.gap8; verticalCenter: parent.verticalCenter }
        spacing: Theme.gap8
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.LocalNetwork

// Somebody on the same network: who, where, and whether a link is there.
Item {
    id: root

    required property lanPeer record

    height: Theme.rowHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: record.name + ", " + record.address + ", " + record.status

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
    }
    Avatar {
        id: avatar
        anchors { left: parent.left; leftMargin: Theme.gap8; verticalCenter: parent.verticalCenter }
        hueId: root.record.id
        name: root.record.name
        online: root.record.reachable
    }
    Column {
        anchors {
            left: avatar.right; leftMargin: Theme.gap12
            right: status.left; rightMargin: Theme.gap12
            verticalCenter: parent.verticalCenter
        }

        PlainText {
            width: parent.width
            maximumLineCount: 1
            text: root.record.name
            font: Theme.strongBodyFont
            Accessible.ignored: true
        }
        PlainText {
            width: parent.width
            maximumLineCount: 1
            text: root.record.address
            font: Theme.secondaryFont
            color: Theme.dimmed
            Accessible.ignored: true
        }
    }
    PlainText {
        id: status
        anchors { right: parent.right; rightMargin: Theme.gap8; verticalCenter: parent.verticalCenter }
        text: root.record.status
        font: Theme.secondaryFont
        color: root.record.reachable ? Theme.text : Theme.dimmed
        Accessible.ignored: true
    }
}

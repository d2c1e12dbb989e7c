// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.Model

// A person who may be chosen.
Item {
    id: root

    required property messengerUser user
    property bool chosen: false
    signal toggled

    height: 48
    Accessible.role: Accessible.CheckBox
    Accessible.name: user.displayName
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.focusable: true
    Accessible.onPressAction: toggled()
    Accessible.onToggleAction: toggled()
    Keys.onReturnPressed: toggled()
    Keys.onSpacePressed: toggled()

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: tap.pressed ? Theme.pressed : hover.hovered ? Theme.raised : "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
    }
    HoverHandler { id: hover }
    TapHandler {
        id: tap
        onTapped: root.toggled()
    }
    Avatar {
        id: avatar
        x: Theme.gap8
        anchors.verticalCenter: parent.verticalCenter
        size: 32
        hueId: root.user.id
        name: root.user.displayName
        symbol: root.user.isAI ? "sparkles" : ""
    }
    PlainText {
        anchors {
            left: avatar.right; leftMargin: Theme.gap12
            right: mark.left; rightMargin: Theme.gap12
            verticalCenter: parent.verticalCenter
        }
        maximumLineCount: 1
        text: root.user.displayName
        Accessible.ignored: true
    }
    Symbol {
        id: mark
        anchors { right: parent.right; rightMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
        name: root.chosen ? "checkmark.circle.fill" : "circle"
        color: root.chosen ? Theme.accent : Theme.faint
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.Model

// One option of a poll. Its result shows once the person has voted anywhere in the poll.
Item {
    id: root

    required property pollOption option
    /// How many chose this option, and all votes of the poll.
    required property int votes
    required property int total
    required property bool isSelected
    required property bool hasVoted
    signal tap

    implicitHeight: Math.max(40, label.implicitHeight + 2 * Theme.gap8)
    activeFocusOnTab: true
    // Not a radio button: a second press takes the vote back.
    Accessible.role: Accessible.CheckBox
    Accessible.name: hasVoted ? option.text + ", " + votes : option.text
    Accessible.checkable: true
    Accessible.checked: isSelected
    Accessible.focusable: true
    Accessible.onPressAction: tap()
    Accessible.onToggleAction: tap()
    Keys.onReturnPressed: tap()
    Keys.onEnterPressed: tap()
    Keys.onSpacePressed: tap()

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: press.pressed || hover.hovered ? Theme.pressed : Theme.surface
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
    }
    Rectangle {
        id: bar
        objectName: "bar"
        height: parent.height
        width: root.hasVoted && root.total > 0 ? root.width * root.votes / root.total : 0
        radius: Theme.controlRadius
        color: Theme.selection
    }
    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: "transparent"
        border { width: root.activeFocus ? 2 : 1; color: root.activeFocus || root.isSelected ? Theme.accent : Theme.divider }
    }
    HoverHandler { id: hover }
    TapHandler {
        id: press
        onTapped: root.tap()
    }
    Symbol {
        id: mark
        x: Theme.gap12
        anchors.verticalCenter: parent.verticalCenter
        name: root.isSelected ? "checkmark.circle.fill" : "circle"
        size: 16
        color: root.isSelected ? Theme.accent : Theme.faint
    }
    PlainText {
        id: label
        anchors {
            left: mark.right; leftMargin: Theme.gap8
            right: number.visible ? number.left : parent.right; rightMargin: number.visible ? Theme.gap8 : Theme.gap12
            verticalCenter: parent.verticalCenter
        }
        text: root.option.text
        wrapMode: Text.Wrap
        Accessible.ignored: true
    }
    PlainText {
        id: number
        anchors { right: parent.right; rightMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
        visible: root.hasVoted
        text: root.votes
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
}

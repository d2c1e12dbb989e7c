// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A row of the sidebar that is no chat: a symbol, a title and a line below it.
Item {
    id: root

    required property string symbol
    required property string title
    property string subtitle
    property color tint: Theme.accent
    property bool compact: false
    /// Its chat is the open one.
    property bool isOpen: false
    /// The sidebar walks over these.
    readonly property bool sidebarRow: true
    signal activated

    width: parent ? parent.width : 0
    height: compact ? 56 : Theme.rowHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: subtitle ? title + ", " + subtitle : title
    Accessible.ignored: !visible
    Accessible.focusable: true
    Accessible.selected: isOpen
    Accessible.focused: activeFocus
    Accessible.onPressAction: activated()
    Keys.onReturnPressed: activated()
    Keys.onEnterPressed: activated()
    Keys.onSpacePressed: activated()

    Rectangle {
        anchors { fill: parent; leftMargin: Theme.gap8; rightMargin: Theme.gap8; topMargin: 1; bottomMargin: 1 }
        radius: Theme.controlRadius
        color: root.isOpen ? Theme.selection : tap.pressed ? Theme.pressed : hover.hovered ? Theme.raised : "transparent"
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
    }
    HoverHandler { id: hover }
    TapHandler {
        id: tap
        onTapped: {
            root.forceActiveFocus();
            root.activated();
        }
    }
    Item {
        id: place
        x: Theme.gap16
        anchors.verticalCenter: parent.verticalCenter
        width: 40
        height: 40

        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            size: root.compact ? 18 : 22
            color: root.tint
        }
    }
    PlainText {
        id: titleText
        anchors { left: place.right; leftMargin: Theme.gap12; right: parent.right; rightMargin: Theme.gap16 }
        y: Math.round(root.subtitle ? parent.height / 2 - height : (parent.height - height) / 2)
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.title
        Accessible.ignored: true
    }
    PlainText {
        anchors { left: titleText.left; right: titleText.right; top: parent.verticalCenter; topMargin: 2 }
        visible: root.subtitle
        maximumLineCount: 1
        horizontalAlignment: Text.AlignLeft
        text: root.subtitle
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
}

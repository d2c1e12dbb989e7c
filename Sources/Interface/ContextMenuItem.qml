// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// One entry of a context menu; one that loses something is `dangerous`.
T.MenuItem {
    id: root

    property bool dangerous: false
    /// At the end of the line; may be empty.
    property string symbol
    /// Once the menu has closed and given the focus back, so that what happens now may take it.
    signal chosen

    function press() {
        if (enabled)
            clicked();
    }

    onTriggered: Qt.callLater(chosen)
    implicitHeight: 36
    implicitWidth: 212
    font: Theme.bodyFont
    opacity: enabled ? 1 : 0.5
    Accessible.role: Accessible.MenuItem
    Accessible.name: text

    background: Rectangle {
        radius: Theme.controlRadius - 2
        color: root.highlighted ? Theme.pressed : "transparent"
    }
    contentItem: PlainText {
        leftPadding: Theme.gap12
        rightPadding: root.subMenu || root.symbol ? 32 : Theme.gap12
        text: root.text
        font: root.font
        color: root.dangerous ? Theme.danger : Theme.text
        verticalAlignment: Text.AlignVCenter
    }
    Symbol {
        visible: root.symbol && !root.subMenu
        anchors { right: parent.right; rightMargin: Theme.gap12; verticalCenter: parent.verticalCenter }
        name: root.symbol || "circle"
        size: 16
        color: root.dangerous ? Theme.danger : Theme.dimmed
    }
    arrow: Symbol {
        visible: root.subMenu
        x: root.width - width - Theme.gap8
        anchors.verticalCenter: parent.verticalCenter
        name: "chevron.right"
        size: 12
        color: Theme.dimmed
    }
}

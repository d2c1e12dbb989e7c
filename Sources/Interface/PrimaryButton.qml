// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// The one thing to do on a screen; one that loses something is `dangerous`. While `busy` it shows that it runs
// instead of its text.
ActionButton {
    id: root

    property bool busy: false
    property bool dangerous: false
    readonly property color ground: dangerous ? Theme.danger : Theme.accent
    readonly property color ink: dangerous ? Theme.background : Theme.onAccent

    implicitHeight: 44
    implicitWidth: label.implicitWidth + 2 * Theme.gap24
    font: Theme.strongBodyFont

    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down ? Qt.darker(root.ground, 1.15) : root.hovered ? Qt.lighter(root.ground, 1.08) : root.ground
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
        FocusRing { control: root }
    }
    contentItem: Item {
        PlainText {
            id: label
            anchors.centerIn: parent
            visible: !root.busy
            text: root.text
            font: root.font
            color: root.ink
        }
        Spinner {
            anchors.centerIn: parent
            running: root.busy
            color: root.ink
        }
    }
}

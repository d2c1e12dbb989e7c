// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A button that shows only a symbol; `text` is its purpose in words.
ActionButton {
    id: root

    required property string symbol
    property color color: Theme.dimmed
    property int symbolSize: 20

    implicitWidth: 36
    implicitHeight: 36

    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down ? Theme.pressed : root.hovered ? Theme.raised : "transparent"
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
        FocusRing { control: root }
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            color: root.color
            size: root.symbolSize
        }
    }
    ButtonTip { button: root }
}

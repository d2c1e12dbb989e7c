// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.ChatList
import OrvaneTalk.Interface

// The line between list and chat: dragged by the pointer, or moved by the arrow keys while it has the focus.
Item {
    id: root

    required property int value
    required property int from
    required property int to
    signal moved(int newValue)

    function moveTo(wanted: real) {
        moved(Math.round(Math.max(from, Math.min(to, wanted))));
    }

    width: 1
    activeFocusOnTab: true
    Accessible.role: Accessible.Slider
    Accessible.name: "Width of the chat list"
    Accessible.focusable: true
    Keys.onLeftPressed: moveTo(value - 20)
    Keys.onRightPressed: moveTo(value + 20)

    Rectangle {
        anchors.centerIn: parent
        width: root.activeFocus || drag.active || hover.hovered ? 3 : 1
        height: parent.height
        color: root.activeFocus || drag.active ? Theme.accent : Theme.divider
    }
    Item {
        anchors { fill: parent; leftMargin: -4; rightMargin: -4 }

        HoverHandler {
            id: hover
            cursorShape: Qt.SplitHCursor
        }
        DragHandler {
            id: drag

            property int start: 0

            target: null
            xAxis.enabled: true
            yAxis.enabled: false
            onActiveChanged: if (active) start = root.value
            onActiveTranslationChanged: if (active) root.moveTo(start + activeTranslation.x)
        }
    }
}

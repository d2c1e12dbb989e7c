// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A switch with what it switches beside it.
T.Switch {
    id: root

    implicitHeight: 44
    implicitWidth: 320
    font: Theme.bodyFont
    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()
    Accessible.role: Accessible.CheckBox
    Accessible.name: text

    function press() {
        if (!enabled)
            return;
        toggle();
        toggled();
        clicked();
    }

    background: Item {
        FocusRing { control: root }
    }
    indicator: Rectangle {
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        width: 40
        height: 24
        radius: 12
        color: root.checked ? Theme.accent : root.hovered ? Theme.pressed : Theme.raised
        border { width: root.checked ? 0 : 1; color: Theme.faint }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }

        Rectangle {
            x: root.checked ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 18
            height: 18
            radius: 9
            color: root.checked ? Theme.onAccent : Theme.dimmed
            Behavior on x { NumberAnimation { duration: Theme.hoverDuration } }
        }
    }
    contentItem: PlainText {
        rightPadding: 40 + Theme.gap12
        text: root.text
        font: root.font
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
    }
}

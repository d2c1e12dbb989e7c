// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// One of several choices in a bar; `checked` is the one that holds.
T.RadioButton {
    id: root

    /// What it is where `text` is no word.
    property string tip

    function press() {
        if (enabled)
            clicked();
    }

    implicitHeight: 32
    implicitWidth: Math.min(label.implicitWidth + 2 * Theme.gap12, 180)
    font: Theme.secondaryFont
    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()
    Accessible.role: Accessible.RadioButton
    Accessible.name: tip || text

    background: Rectangle {
        radius: height / 2
        color: root.checked ? Theme.selection : root.down ? Theme.pressed : root.hovered ? Theme.raised : "transparent"
        border { width: root.visualFocus ? 2 : 1; color: root.visualFocus ? Theme.accent : root.checked ? "transparent" : Theme.divider }
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
    }
    contentItem: PlainText {
        id: label
        leftPadding: Theme.gap12
        rightPadding: Theme.gap12
        text: root.text
        font: root.font
        color: root.checked ? Theme.text : Theme.dimmed
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    ButtonTip {
        button: root
        text: root.tip
    }
}

import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// One of several choices in a bar; `checked` is the one that holds.
T.RadioButton {
    id: root

    implicitHeight: 32
    implicitWidth: Math.min(label.implicitWidth + 2 * Theme.gap12, 180)
    font: Theme.secondaryFont
    hoverEnabled: true
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Accessible.name: text
    Accessible.onPressAction: clicked()

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
}

import QtQuick
import OrvaneTalk.Interface

// Drawn around a control that holds the keyboard's focus.
Rectangle {
    required property Item control

    anchors.fill: parent
    anchors.margins: -2
    visible: control.activeFocus && (control["visualFocus"] ?? true)
    color: "transparent"
    radius: Theme.controlRadius + 2
    border.width: 2
    border.color: Theme.accent
}

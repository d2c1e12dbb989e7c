// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// Drawn around a control that holds the keyboard's focus.
Rectangle {
    required property T.Control control

    anchors.fill: parent
    anchors.margins: -2
    visible: control.visualFocus
    color: "transparent"
    radius: Theme.controlRadius + 2
    border.width: 2
    border.color: Theme.accent
}

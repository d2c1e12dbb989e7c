// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A word on what the pointer is over.
Rectangle {
    id: root

    required property string text

    implicitWidth: Math.min(label.implicitWidth, 360) + 2 * Theme.gap8
    implicitHeight: label.implicitHeight + Theme.gap8
    radius: Theme.controlRadius
    color: Theme.pressed

    PlainText {
        id: label
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.gap8
        text: root.text
        font: Theme.captionFont
        wrapMode: Text.WrapAnywhere
        elide: Text.ElideNone
        Accessible.ignored: true
    }
}

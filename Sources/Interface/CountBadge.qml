// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A number on the accent colour. At most 99 is shown.
Rectangle {
    id: root

    required property int count

    visible: count > 0
    implicitWidth: Math.max(implicitHeight, number.implicitWidth + Theme.gap12)
    implicitHeight: 20
    radius: height / 2
    color: Theme.accent
    Accessible.ignored: true

    PlainText {
        id: number
        anchors.centerIn: parent
        text: Math.min(root.count, 99)
        font: Theme.strongCaptionFont
        color: Theme.onAccent
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A quiet action in the form of a line of text.
ActionButton {
    id: root

    property color color: Theme.accent

    implicitHeight: 32
    implicitWidth: label.implicitWidth + 2 * Theme.gap8
    font: Theme.secondaryFont

    background: Item {
        FocusRing { control: root }
    }
    contentItem: PlainText {
        id: label
        text: root.text
        font.family: root.font.family
        font.pixelSize: root.font.pixelSize
        font.underline: root.hovered
        color: root.color
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
}

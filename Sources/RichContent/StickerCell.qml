// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// One sticker of the picker; it goes by the words that find it.
Item {
    id: root

    required property sticker record
    property bool focused: false
    signal chosen

    Accessible.role: Accessible.Button
    Accessible.name: Array.from(record.keywords).join(", ")
    Accessible.focusable: true
    Accessible.onPressAction: chosen()

    Rectangle {
        anchors { fill: parent; margins: 2 }
        radius: Theme.controlRadius
        color: press.pressed ? Theme.pressed : hover.hovered ? Theme.raised : "transparent"
        border { width: root.focused ? 2 : 0; color: Theme.accent }
    }
    HoverHandler { id: hover }
    TapHandler {
        id: press
        onTapped: root.chosen()
    }
    PlainText {
        anchors { fill: parent; margins: 2 }
        text: root.record.emoji
        font.family: Theme.emojiFamily
        font.pixelSize: 38
        // An emoji that the font draws as two stays in its cell.
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: 12
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}

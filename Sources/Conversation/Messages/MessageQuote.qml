// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// The message that another one answers, in short.
Item {
    id: root

    required property string sender
    required property string text
    required property color ink
    required property color accent

    implicitHeight: 36
    implicitWidth: Theme.gap12 + Math.max(name.implicitWidth, quote.implicitWidth)

    Rectangle {
        width: 3
        height: parent.height
        radius: 1.5
        color: root.accent
    }
    PlainText {
        id: name
        x: Theme.gap12
        width: parent.width - x
        text: root.sender
        font: Theme.strongSecondaryFont
        color: root.accent
        maximumLineCount: 1
        Accessible.ignored: true
    }
    PlainText {
        id: quote
        anchors { left: name.left; right: parent.right; bottom: parent.bottom }
        text: root.text
        font: Theme.secondaryFont
        color: root.ink
        maximumLineCount: 1
        Accessible.ignored: true
    }
}

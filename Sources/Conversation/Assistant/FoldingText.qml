// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A text of which the first lines show; the rest unfolds.
Column {
    id: root

    required property string text
    property int foldedLines: 3
    property alias font: shown.font
    property alias color: shown.color
    property bool unfolded: false

    onTextChanged: unfolded = false

    PlainText {
        id: shown
        width: parent.width
        text: root.text
        wrapMode: Text.Wrap
        lineHeight: Theme.lineHeight
        maximumLineCount: root.unfolded ? 100000 : root.foldedLines
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    LinkButton {
        x: -Theme.gap8
        visible: shown.truncated || root.unfolded
        text: root.unfolded ? "Show less" : "Show all"
        onClicked: root.unfolded = !root.unfolded
    }
}

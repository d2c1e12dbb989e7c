// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// What a place shows while there is nothing in it: a symbol, a title and a line of help.
Column {
    id: root

    property string symbol
    property string title
    property string hint

    spacing: Theme.gap8
    Accessible.role: Accessible.StaticText
    Accessible.name: hint ? title + ". " + hint : title

    Symbol {
        anchors.horizontalCenter: parent.horizontalCenter
        visible: root.symbol
        name: root.symbol || "message.fill"
        size: 48
        color: Theme.faint
    }
    PlainText {
        anchors.horizontalCenter: parent.horizontalCenter
        visible: text
        text: root.title
        font: Theme.headingFont
    }
    PlainText {
        width: root.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        visible: text
        text: root.hint
        font: Theme.secondaryFont
        color: Theme.dimmed
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A word below a poll with its symbol.
Row {
    id: root

    required property string symbol
    required property string text

    spacing: Theme.gap4
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Symbol {
        anchors.verticalCenter: parent.verticalCenter
        name: root.symbol
        size: 12
        color: Theme.dimmed
    }
    PlainText {
        text: root.text
        font: Theme.captionFont
        color: Theme.dimmed
        Accessible.ignored: true
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A strip over or under the conversation: a symbol, a line of heading, a body, and a way to close it.
Rectangle {
    id: root

    required property string symbol
    property string heading
    /// The purpose of the closing button.
    property string closeText: "Close"
    /// Of the conversation's column.
    readonly property int side: Theme.columnSide(width)
    default property alias body: column.data
    signal closed

    implicitHeight: column.y + column.implicitHeight + Theme.gap12
    color: Theme.surface
    Accessible.role: Accessible.Grouping
    Accessible.name: heading

    Symbol {
        id: mark
        anchors.verticalCenter: title.verticalCenter
        x: root.side
        name: root.symbol
        size: 16
        color: Theme.accent
    }
    PlainText {
        id: title
        anchors {
            left: mark.right; leftMargin: Theme.gap8
            right: close.left; rightMargin: Theme.gap8
            verticalCenter: close.verticalCenter
        }
        text: root.heading
        font: Theme.strongSecondaryFont
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    SymbolButton {
        id: close
        anchors { right: parent.right; rightMargin: root.side - Theme.gap8; top: parent.top; topMargin: Theme.gap4 }
        symbol: "xmark.circle.fill"
        symbolSize: 16
        text: root.closeText
        onClicked: root.closed()
    }
    Column {
        id: column
        anchors { left: parent.left; right: parent.right; top: close.bottom; leftMargin: root.side; rightMargin: root.side }
        spacing: Theme.gap4
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 1
        color: Theme.divider
    }
}

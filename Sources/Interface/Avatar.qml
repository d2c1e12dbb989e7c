// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A person's initial on a hue of their own, or a symbol for everything that is no single person.
Rectangle {
    id: root

    /// Decides the hue.
    required property string hueId
    required property string name
    property string symbol
    property bool online: false
    property int size: 40
    /// Of what the avatar stands on, to cut out the presence dot.
    property color ground: Theme.background

    /// The last symbol there was: a row that comes to stand for a person and back loads nothing.
    property string drawn: "message.fill"

    onSymbolChanged: if (symbol) drawn = symbol
    width: size
    height: size
    radius: size / 2
    color: Theme.hueOf(hueId)
    Accessible.ignored: true

    PlainText {
        anchors.centerIn: parent
        visible: !root.symbol
        text: Theme.initialOf(root.name)
        font: Theme.initialFont(root.size)
        color: "white"
    }
    Symbol {
        anchors.centerIn: parent
        visible: root.symbol
        name: root.drawn
        size: Math.round(root.size * 0.5)
        color: "white"
    }
    Rectangle {
        visible: root.online
        anchors { right: parent.right; bottom: parent.bottom; margins: -1 }
        width: 12
        height: 12
        radius: 6
        color: Theme.online
        border.width: 2
        border.color: root.ground
    }
}

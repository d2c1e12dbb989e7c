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

    readonly property string initial: {
        // A character may take two of a string's places.
        const code = name.trim().codePointAt(0);
        return code === undefined ? "?" : String.fromCodePoint(code).toUpperCase();
    }

    width: size
    height: size
    radius: size / 2
    color: Theme.hueOf(hueId)
    Accessible.ignored: true

    PlainText {
        anchors.centerIn: parent
        visible: !root.symbol
        text: root.initial
        font.family: Theme.strongBodyFont.family
        font.weight: Font.DemiBold
        font.pixelSize: Math.round(root.size * 0.42)
        color: "white"
    }
    Symbol {
        anchors.centerIn: parent
        visible: root.symbol
        name: root.symbol || "message.fill"
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

import QtQuick
import OrvaneTalk.Interface

// The one thing to do on a screen. While `busy` it shows that it runs instead of its text.
ActionButton {
    id: root

    property bool busy: false

    implicitHeight: 44
    implicitWidth: label.implicitWidth + 2 * Theme.gap24
    font: Theme.strongBodyFont

    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down ? Qt.darker(Theme.accent, 1.15)
                         : root.hovered ? Qt.lighter(Theme.accent, 1.08) : Theme.accent
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
        FocusRing { control: root }
    }
    contentItem: Item {
        PlainText {
            id: label
            anchors.centerIn: parent
            visible: !root.busy
            text: root.text
            font: root.font
            color: Theme.onAccent
        }
        Spinner {
            anchors.centerIn: parent
            running: root.busy
            color: Theme.onAccent
        }
    }
}

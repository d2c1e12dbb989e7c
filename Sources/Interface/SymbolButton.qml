import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A button that shows only a symbol; `text` is its purpose in words.
T.Button {
    id: root

    required property string symbol
    property color color: Theme.dimmed
    property int symbolSize: 20

    implicitWidth: 36
    implicitHeight: 36
    hoverEnabled: true
    Keys.onReturnPressed: click()
    Keys.onEnterPressed: click()
    Accessible.name: text

    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down ? Theme.pressed : root.hovered ? Theme.raised : "transparent"
        Behavior on color { ColorAnimation { duration: Theme.hoverDuration } }
        FocusRing { control: root }
    }
    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            color: root.color
            size: root.symbolSize
        }
    }
}

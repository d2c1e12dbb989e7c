import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// What can be done with the thing that was clicked.
T.Menu {
    id: root

    margins: Theme.gap8
    padding: Theme.gap4
    implicitWidth: 220
    implicitHeight: contentItem.implicitHeight + 2 * padding
    overlap: 1
    delegate: ContextMenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        interactive: contentHeight > height
        currentIndex: root.currentIndex
        clip: true
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.raised
        border { width: 1; color: Theme.divider }
    }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.hoverDuration } }
}

import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// Strips one below the other, which scroll where they would be taller than they may.
Flickable {
    id: root

    required property int tallest
    default property alias strips: column.data

    height: Math.min(column.height, tallest)
    contentHeight: column.height
    boundsBehavior: Flickable.StopAtBounds
    clip: height < contentHeight
    // Always seen: without it nothing tells that there is more.
    T.ScrollBar.vertical: ScrollThumb { always: true }

    Column {
        id: column
        width: root.width
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// Strips one below the other, which scroll where they would be taller than they may.
Flickable {
    id: root

    required property int tallest
    /// Whether the strips at the end, nearest to the input, are those that stay in sight.
    property bool keepsEnd: false
    default property alias strips: column.data

    height: Math.min(column.height, tallest)
    contentHeight: column.height
    onContentHeightChanged: if (keepsEnd) contentY = Math.max(0, contentHeight - height)
    onHeightChanged: if (keepsEnd) contentY = Math.max(0, contentHeight - height)
    boundsBehavior: Flickable.StopAtBounds
    clip: height < contentHeight
    // Always seen: without it nothing tells that there is more.
    T.ScrollBar.vertical: ScrollThumb { always: true }

    Column {
        id: column
        width: root.width
    }
}

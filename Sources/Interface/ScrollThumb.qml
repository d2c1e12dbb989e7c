// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// The thumb of a scrolling view; seen while it moves or the pointer is near.
T.ScrollBar {
    id: root

    property bool always: false

    implicitWidth: 8
    padding: 2
    visible: size < 1
    minimumSize: 0.06
    // The view itself is what assistive technology scrolls.
    Accessible.ignored: true

    contentItem: Rectangle {
        implicitWidth: 4
        radius: 2
        color: root.pressed || root.hovered ? Theme.dimmed : Theme.faint
        opacity: root.always || root.active || root.hovered ? 1 : 0
        // What nobody sees need not follow.
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: Theme.panelDuration } }
    }
}

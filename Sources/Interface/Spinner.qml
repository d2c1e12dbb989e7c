// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// Three dots that take turns: something is going on.
Row {
    id: root

    property color color: Theme.dimmed
    property bool running: true

    spacing: Theme.gap4
    visible: running

    Repeater {
        model: 3

        Rectangle {
            id: dot

            required property int index

            width: 6
            height: 6
            radius: 3
            color: root.color

            SequentialAnimation on opacity {
                running: root.running && !Theme.reducedMotion
                loops: Animation.Infinite
                PauseAnimation { duration: dot.index * Theme.panelDuration }
                NumberAnimation { from: 1; to: 0.25; duration: Theme.panelDuration }
                NumberAnimation { from: 0.25; to: 1; duration: Theme.panelDuration }
                PauseAnimation { duration: (2 - dot.index) * Theme.panelDuration }
            }
        }
    }
}

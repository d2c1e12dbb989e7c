// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// When a message was said, and what became of it.
Row {
    id: root

    required property MessageRow row
    required property color ink

    spacing: Theme.gap4

    Loader {
        active: root.row.starred
        visible: active
        anchors.verticalCenter: parent.verticalCenter
        sourceComponent: Symbol {
            name: "star.fill"
            size: 11
            color: root.ink
        }
    }
    PlainText {
        visible: root.row.edited
        text: "edited"
        font: Theme.captionFont
        color: root.ink
        Accessible.ignored: true
    }
    PlainText {
        id: clock
        text: DisplayTimes.clock(root.row.timestamp)
        font: Theme.captionFont
        color: root.ink
        Accessible.ignored: true

        HoverHandler { id: hover }

        Loader {
            active: hover.hovered
            sourceComponent: Tip {
                parent: clock
                x: clock.width - width
                y: -height - Theme.gap4
                text: DisplayTimes.full(root.row.timestamp)
            }
        }
    }
    Loader {
        active: root.row.own
        visible: active
        anchors.verticalCenter: parent.verticalCenter
        sourceComponent: DeliveryIcon {
            status: root.row.delivery
            ink: root.ink
        }
    }
}

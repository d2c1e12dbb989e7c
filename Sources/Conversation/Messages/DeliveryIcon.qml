// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// How far an own message got. A failed one carries the mark of a delivered one.
Item {
    id: root

    required property string status
    required property color ink
    readonly property bool isRead: status === "read"

    implicitWidth: isRead ? 17 : 12
    implicitHeight: 12

    Symbol {
        name: root.status === "sending" ? "clock" : "checkmark"
        size: 12
        color: root.isRead ? Theme.readMark : root.ink
        opacity: root.status === "sending" ? 0.5 : root.status === "sent" ? 0.6 : 1
    }
    Symbol {
        visible: root.isRead
        x: 5
        name: "checkmark"
        size: 12
        color: Theme.readMark
    }
}

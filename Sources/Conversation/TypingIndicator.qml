import QtQuick
import OrvaneTalk.Interface

// Who is writing.
Item {
    id: root

    required property string line

    implicitHeight: line ? 24 : 0

    PlainText {
        anchors { left: parent.left; right: parent.right; leftMargin: Math.max(Theme.gap16, (root.width - 760) / 2) + Theme.gap12; rightMargin: Theme.gap16 }
        text: root.line
        visible: text
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}

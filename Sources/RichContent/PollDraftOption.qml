// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// One option of a poll that is being written, with the button that takes it out.
Item {
    id: root

    required property int index
    required property string text
    required property bool removable
    signal edited(string newText)
    signal accepted
    signal removed

    function edit() {
        field.forceActiveFocus(Qt.TabFocusReason);
    }

    implicitHeight: field.implicitHeight

    FormField {
        id: field
        anchors { left: parent.left; right: remove.visible ? remove.left : parent.right; rightMargin: remove.visible ? Theme.gap8 : 0 }
        placeholderText: "Вариант " + (root.index + 1)
        text: root.text
        onTextChanged: root.edited(text)
        onAccepted: root.accepted()
    }
    SymbolButton {
        id: remove
        visible: root.removable
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        symbol: "minus.circle.fill"
        text: "Удалить вариант " + (root.index + 1)
        onClicked: root.removed()
    }
}

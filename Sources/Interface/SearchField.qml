// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A line to search with. Esc clears it.
T.TextField {
    id: root

    implicitHeight: 36
    implicitWidth: 200
    leftPadding: glass.x + glass.width + Theme.gap8
    rightPadding: clear.visible ? clear.width : Theme.gap12
    verticalAlignment: TextInput.AlignVCenter
    font: Theme.bodyFont
    color: Theme.text
    selectionColor: Theme.accent
    selectedTextColor: Theme.onAccent
    selectByMouse: true
    Accessible.role: Accessible.EditableText
    Accessible.name: placeholderText
    Keys.onEscapePressed: event => {
        event.accepted = text !== "";
        clear.empty();
    }

    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.raised
        border { width: root.activeFocus ? 2 : 0; color: Theme.accent }
    }
    Symbol {
        id: glass
        x: Theme.gap12
        anchors.verticalCenter: parent.verticalCenter
        name: "magnifyingglass"
        size: 16
        color: Theme.dimmed
    }
    PlainText {
        anchors { fill: parent; leftMargin: root.leftPadding; rightMargin: root.rightPadding }
        visible: !root.text && !root.preeditText
        text: root.placeholderText
        color: Theme.dimmed
        verticalAlignment: Text.AlignVCenter
    }
    SymbolButton {
        id: clear

        function empty() {
            root.clear();
            root.textEdited();
        }

        visible: root.text !== ""
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        symbol: "xmark"
        symbolSize: 16
        text: "Clear"
        focusPolicy: Qt.NoFocus
        onClicked: empty()
    }
}

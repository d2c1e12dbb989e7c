// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A line of text in a form. With `secret` it hides what is typed, and offers to show it.
FocusScope {
    id: root

    property alias text: field.text
    property alias placeholderText: field.placeholderText
    property string label
    property bool secret: false
    signal accepted

    // The name of a password entry itself is withheld from assistive technology.
    Accessible.role: secret ? Accessible.Grouping : Accessible.NoRole
    Accessible.name: secret ? placeholderText : ""

    implicitHeight: (label ? caption.implicitHeight + Theme.gap4 : 0) + 44
    implicitWidth: 320

    PlainText {
        id: caption
        visible: root.label
        text: root.label
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    T.TextField {
        id: field

        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 44
        leftPadding: Theme.gap12
        rightPadding: root.secret ? reveal.width + Theme.gap8 : Theme.gap12
        verticalAlignment: TextInput.AlignVCenter
        focus: true
        font: Theme.bodyFont
        color: Theme.text
        selectionColor: Theme.accent
        selectedTextColor: Theme.onAccent
        selectByMouse: true
        echoMode: root.secret && !reveal.checked ? TextInput.Password : TextInput.Normal
        inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
        onAccepted: root.accepted()
        Accessible.role: Accessible.EditableText
        Accessible.name: placeholderText
        Accessible.passwordEdit: root.secret

        background: Rectangle {
            radius: Theme.controlRadius
            color: Theme.surface
            border.width: field.activeFocus ? 2 : 1
            border.color: field.activeFocus ? Theme.accent : Theme.divider
        }

        PlainText {
            anchors { fill: parent; leftMargin: field.leftPadding; rightMargin: field.rightPadding }
            visible: !field.text && !field.preeditText
            text: field.placeholderText
            color: Theme.dimmed
            verticalAlignment: Text.AlignVCenter
        }
    }

    SymbolButton {
        id: reveal

        visible: root.secret
        anchors { right: field.right; rightMargin: Theme.gap4; verticalCenter: field.verticalCenter }
        checkable: true
        symbol: checked ? "eye.slash" : "eye"
        text: checked ? "Hide password" : "Show password"
    }
}

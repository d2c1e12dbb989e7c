import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Where a message is written: Enter sends, Shift+Enter breaks the line, the field grows to eight lines.
FocusScope {
    id: root

    property string text
    property bool isInputFocused: false
    signal edited(string newText)
    signal focusTold(bool focused)
    signal send
    signal sticker
    signal poll
    signal aiToggle
    signal editLast
    signal escaped

    readonly property real lineHeight: metrics.height
    readonly property int columnWidth: width - 2 * Theme.columnSide(width)

    implicitHeight: field.height + 2 * Theme.gap12

    onTextChanged: {
        if (area.text === text)
            return;
        area.text = text;
        area.cursorPosition = text.length;
    }
    onIsInputFocusedChanged: if (isInputFocused && !area.activeFocus) area.forceActiveFocus()

    FontMetrics {
        id: metrics
        font: Theme.bodyFont
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 1
        color: Theme.divider
    }
    Row {
        id: before
        x: Math.round((root.width - root.columnWidth) / 2)
        anchors { bottom: field.bottom; bottomMargin: Theme.gap4 }

        SymbolButton {
            symbol: "face.smiling"
            text: "Stickers"
            onClicked: root.sticker()
        }
        SymbolButton {
            symbol: "chart.bar.fill"
            text: "Poll"
            onClicked: root.poll()
        }
    }
    SymbolButton {
        id: after
        x: before.x + root.columnWidth - width
        anchors { bottom: field.bottom; bottomMargin: Theme.gap4 }
        symbol: "sparkles"
        text: "AI"
        onClicked: root.aiToggle()
    }
    Rectangle {
        id: field
        anchors {
            left: before.right; leftMargin: Theme.gap8
            right: after.left; rightMargin: Theme.gap8
            verticalCenter: parent.verticalCenter
        }
        height: Math.max(44, Math.min(area.contentHeight, 8 * root.lineHeight) + 2 * Theme.gap12)
        radius: Theme.cardRadius
        color: Theme.surface
        border { width: area.activeFocus ? 2 : 1; color: area.activeFocus ? Theme.accent : Theme.divider }

        Flickable {
            id: scroller
            anchors { fill: parent; rightMargin: sendButton.width + Theme.gap8; topMargin: 2; bottomMargin: 2 }
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: ScrollThumb {}

            T.TextArea.flickable: T.TextArea {
                id: area

                leftPadding: Theme.gap16
                topPadding: Theme.gap12 - 2
                bottomPadding: Theme.gap12 - 2
                focus: true
                font: Theme.bodyFont
                color: Theme.text
                selectionColor: Theme.accent
                selectedTextColor: Theme.onAccent
                selectByMouse: true
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                placeholderText: "Message..."
                verticalAlignment: TextEdit.AlignVCenter
                onTextChanged: root.edited(text)
                onActiveFocusChanged: root.focusTold(activeFocus)
                Keys.onUpPressed: event => {
                    event.accepted = text === "";
                    if (event.accepted)
                        root.editLast();
                }
                Keys.onEscapePressed: root.escaped()
                Accessible.role: Accessible.EditableText
                Accessible.name: placeholderText

                Keys.onPressed: event => {
                    const enter = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
                    event.accepted = enter && !(event.modifiers & Qt.ShiftModifier);
                    if (event.accepted)
                        root.send();
                }

                PlainText {
                    anchors { fill: parent; leftMargin: area.leftPadding; topMargin: area.topPadding }
                    visible: !area.text && !area.preeditText
                    text: area.placeholderText
                    color: Theme.dimmed
                    Accessible.ignored: true
                }
            }
        }
        SymbolButton {
            id: sendButton
            anchors { right: parent.right; rightMargin: Theme.gap4; bottom: parent.bottom; bottomMargin: Theme.gap4 }
            visible: area.text !== ""
            symbol: "arrow.up.circle.fill"
            symbolSize: 28
            color: Theme.accent
            text: "Send"
            onClicked: root.send()
        }
    }
}

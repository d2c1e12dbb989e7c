// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Where a message is written or rewritten: Enter accepts, Shift+Enter breaks the line, Tab walks on. It grows
// with its text up to `mostHeight`.
Rectangle {
    id: root

    property string text
    property string prompt
    /// Of the text; eight lines.
    property real mostHeight: 8 * metrics.height
    /// Left free at the right end for what stands there.
    property int rightInset: 0
    readonly property bool hasFocus: area.activeFocus
    readonly property bool isEmpty: area.text === ""
    /// Something that came did not fit any more.
    property bool isFull: false

    signal edited(string newText)
    signal focusTold(bool focused)
    signal accepted
    signal escaped
    /// The arrow key, while nothing is written.
    signal upWanted
    /// The copying key, while nothing is selected here.
    signal copyWanted

    function write() {
        area.forceActiveFocus();
    }

    implicitHeight: Math.max(44, Math.min(area.contentHeight, mostHeight) + 2 * Theme.gap12)
    radius: Theme.cardRadius
    color: Theme.surface
    border { width: area.activeFocus ? 2 : 1; color: area.activeFocus ? Theme.accent : Theme.divider }

    onTextChanged: {
        if (area.text === text)
            return;
        const given = text;
        const fits = WritingLimit.fitting(given, WritingLimit.most);
        area.text = fits;
        area.cursorPosition = fits.length;
        isFull = fits.length < given.length;
    }

    FontMetrics {
        id: metrics
        font: Theme.bodyFont
    }
    Flickable {
        id: scroller
        anchors { fill: parent; rightMargin: root.rightInset; topMargin: 2; bottomMargin: 2 }
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ScrollThumb {}

        T.TextArea.flickable: T.TextArea {
            id: area

            function take(pasted) {
                if (selectedText)
                    remove(selectionStart, selectionEnd);
                const fits = WritingLimit.fitting(pasted, WritingLimit.most - length);
                insert(cursorPosition, fits);
                root.isFull = fits.length < pasted.length;
            }
            function walk(forward) {
                nextItemInFocusChain(forward).forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
            }

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
            placeholderText: root.prompt
            verticalAlignment: TextEdit.AlignVCenter
            Accessible.role: Accessible.EditableText
            Accessible.name: placeholderText

            Component.onCompleted: cursorPosition = length
            onTextChanged: {
                const isTooLong = length > WritingLimit.most;
                if (isTooLong)
                    remove(WritingLimit.most, length);
                else
                    root.edited(text);
                root.isFull = isTooLong;
            }
            onActiveFocusChanged: root.focusTold(activeFocus)
            Keys.onTabPressed: walk(true)
            Keys.onBacktabPressed: walk(false)
            Keys.onEscapePressed: root.escaped()
            Keys.onPressed: event => {
                const enter = event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
                event.accepted = true;
                if (enter && !(event.modifiers & Qt.ShiftModifier))
                    root.accepted();
                else if (event.key === Qt.Key_Up && root.isEmpty)
                    root.upWanted();
                else if (event.matches(StandardKey.Paste))
                    take(WritingLimit.copied());
                else if (event.matches(StandardKey.Copy) && !selectedText)
                    root.copyWanted();
                else
                    event.accepted = false;
            }

            PlainText {
                anchors { fill: parent; leftMargin: area.leftPadding; topMargin: area.topPadding }
                visible: !area.text && !area.preeditText
                text: area.placeholderText
                color: Theme.dimmed
                Accessible.ignored: true
            }
            // The middle button pastes too.
            MouseArea {
                anchors.fill: parent
                acceptedButtons: Qt.MiddleButton
                cursorShape: Qt.IBeamCursor
                onClicked: mouse => {
                    area.forceActiveFocus();
                    area.cursorPosition = area.positionAt(mouse.x, mouse.y);
                    area.take(WritingLimit.selected());
                }
            }
        }
    }
}

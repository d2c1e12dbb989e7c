// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A card over the dimmed window, with a title bar, a body and buttons at its end. Esc and a click outside close
// it, unless `keepsText` says that something typed would be lost. Made by a SheetLoader, it opens by itself.
T.Dialog {
    id: root

    property bool keepsText: false
    /// The quiet way out, at the end of the title bar.
    property string closeText: "Cancel"
    /// The buttons at the end; at most a few.
    default property alias body: column.data
    property alias buttons: buttonRow.data
    /// What the title bar offers besides the way out.
    property alias titleButtons: titleRow.data

    /// For a sheet in which Enter must do nothing.
    function focusWayOut() {
        wayOut.forceActiveFocus(Qt.TabFocusReason);
    }

    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: parent ? Math.min(480, parent.width - 2 * Theme.gap32) : 480
    height: parent ? Math.min(implicitHeight, parent.height - 2 * Theme.gap32) : implicitHeight
    implicitHeight: titleBar.height + column.implicitHeight + (buttonRow.visible ? 76 : Theme.gap16)
    modal: true
    focus: true
    closePolicy: keepsText ? T.Popup.NoAutoClose : T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    Component.onCompleted: open()

    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.5)
    }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.panelDuration } }

    background: Rectangle {
        radius: Theme.cardRadius
        color: Theme.background
        border { width: 1; color: Theme.divider }
    }
    contentItem: FocusScope {
        focus: true

        Item {
            id: titleBar
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 56

            PlainText {
                anchors {
                    left: parent.left; leftMargin: Theme.gap24
                    right: titleRow.left; rightMargin: Theme.gap8
                    verticalCenter: parent.verticalCenter
                }
                text: root.title
                font: Theme.headingFont
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Row {
                id: titleRow
                anchors { right: wayOut.left; rightMargin: Theme.gap4; verticalCenter: parent.verticalCenter }
            }
            LinkButton {
                id: wayOut
                anchors { right: parent.right; rightMargin: Theme.gap16; verticalCenter: parent.verticalCenter }
                text: root.closeText
                onClicked: root.close()
            }
        }
        Flickable {
            id: scroll
            anchors {
                left: parent.left; right: parent.right; top: titleBar.bottom
                bottom: buttonRow.visible ? buttonRow.top : parent.bottom
                bottomMargin: Theme.gap16
            }
            contentHeight: column.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            T.ScrollBar.vertical: ScrollThumb {}

            // Whatever has the focus is scrolled into sight.
            readonly property Item focused: Window.activeFocusItem
            onFocusedChanged: reveal()
            onContentHeightChanged: reveal()
            function reveal() {
                let item = focused;
                while (item && item !== column)
                    item = item.parent;
                if (!item)
                    return;
                const top = focused.mapToItem(column, 0, 0).y - Theme.gap4;
                const bottom = top + focused.height + 2 * Theme.gap4;
                // A row of a list within is the list's to reveal: there is no further to go than the end.
                contentY = Math.max(0, Math.min(top, contentHeight - height, Math.max(contentY, bottom - height)));
            }

            Column {
                id: column
                x: Theme.gap24
                width: scroll.width - 2 * Theme.gap24
                spacing: Theme.gap12
            }
        }
        Row {
            id: buttonRow
            visible: children.length > 0
            anchors { right: parent.right; rightMargin: Theme.gap24; bottom: parent.bottom; bottomMargin: Theme.gap16 }
            spacing: Theme.gap12
        }
    }
}

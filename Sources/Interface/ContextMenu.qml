// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// What can be done with the thing that was clicked. Closed, it gives the focus back to where it was.
T.Menu {
    id: root

    readonly property FocusReturn focusBefore: FocusReturn {}

    onAboutToShow: {
        const isSubmenu = parent as ContextMenuItem !== null;
        focusBefore.keep(isSubmenu ? null : parent.Window.activeFocusItem);
    }
    onClosed: focusBefore.giveBack()
    margins: Theme.gap8
    padding: Theme.gap4
    implicitWidth: 220
    implicitHeight: contentItem.implicitHeight + 2 * padding
    overlap: 1
    delegate: ContextMenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        interactive: contentHeight > height
        currentIndex: root.currentIndex
        clip: true
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.raised
        border { width: 1; color: Theme.divider }
    }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.hoverDuration } }
}

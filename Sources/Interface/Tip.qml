// SPDX-License-Identifier: MIT
import QtQuick.Templates as T
import OrvaneTalk.Interface

// A word on its parent, over everything else and always inside the window. It shows for as long as it is there.
T.ToolTip {
    id: root

    margins: Theme.gap4
    implicitWidth: contentItem.implicitWidth
    implicitHeight: contentItem.implicitHeight
    visible: true
    // Esc is for what the parent stands in.
    closePolicy: T.Popup.NoAutoClose
    contentItem: HoverTip {
        text: root.text
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// The name of a button that shows only a symbol, while the pointer rests on it or the keyboard is there.
Loader {
    id: root

    required property T.AbstractButton button
    property string text: button.text

    active: text && !button.down && (button.hovered || button.visualFocus)
    sourceComponent: Tip {
        parent: root.button
        x: Math.round((root.button.width - width) / 2)
        y: root.button.height + Theme.gap4
        delay: Application.styleHints.mousePressAndHoldInterval
        text: root.text
    }
}

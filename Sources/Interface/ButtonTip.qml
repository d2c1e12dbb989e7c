import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface

// The name of a button that shows only a symbol, while the pointer rests on it or the keyboard is there.
Loader {
    id: root

    required property T.AbstractButton button
    property string text: button.text

    active: text && !button.down && (button.hovered || button.visualFocus)
    sourceComponent: T.ToolTip {
        parent: root.button
        x: Math.round((root.button.width - width) / 2)
        y: root.button.height + Theme.gap4
        margins: Theme.gap4
        implicitWidth: contentItem.implicitWidth
        implicitHeight: contentItem.implicitHeight
        delay: Application.styleHints.mousePressAndHoldInterval
        visible: true
        // Esc is for what the button stands in.
        closePolicy: T.Popup.NoAutoClose
        contentItem: HoverTip {
            text: root.text
        }
    }
}

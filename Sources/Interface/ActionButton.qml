// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T

// What all buttons share: they are pressed by Return and Enter as well, and look it when they can't be.
T.Button {
    id: root

    /// Assistive technology calls it too, whether the button is enabled or not.
    function press() {
        if (!enabled)
            return;
        if (checkable)
            toggle();
        clicked();
    }

    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()
    Accessible.role: checkable ? Accessible.CheckBox : Accessible.Button
    Accessible.name: text
}

import QtQuick
import QtQuick.Templates as T

// What all buttons share: they are pressed by Return and Enter as well, and by assistive technology.
T.Button {
    id: root

    function press() {
        if (checkable)
            toggle();
        clicked();
    }

    hoverEnabled: true
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()
    Accessible.name: text
    Accessible.onPressAction: press()
}

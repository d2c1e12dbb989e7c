// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// Makes a sheet while `shown`, and gives the focus back to where it was.
Loader {
    property bool shown: false

    active: false
    onShownChanged: {
        if (shown)
            focusBefore.keep(Window.activeFocusItem);
        active = shown;
        if (!shown)
            focusBefore.giveBack();
    }

    FocusReturn {
        id: focusBefore
    }
}

import QtQuick

// Makes a sheet while `shown`, and gives the focus back to where it was.
Loader {
    property bool shown: false
    property Item returnFocus: null

    active: false
    onShownChanged: {
        if (shown)
            returnFocus = Window.activeFocusItem;
        active = shown;
        if (!shown && returnFocus)
            returnFocus.forceActiveFocus();
    }
}

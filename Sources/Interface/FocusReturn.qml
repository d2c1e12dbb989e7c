// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T

// Where the keyboard was, to go back there: with the ring that it had, and only to what can still be seen.
QtObject {
    property Item item: null
    property bool showsRing: false

    function keep(focused: Item) {
        item = focused;
        showsRing = (focused as T.Control)?.visualFocus ?? false;
    }
    function giveBack() {
        if (item?.visible && item.enabled)
            item.forceActiveFocus(showsRing ? Qt.TabFocusReason : Qt.OtherFocusReason);
        item = null;
    }
}

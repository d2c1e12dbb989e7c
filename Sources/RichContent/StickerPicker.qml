// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// The panel of stickers: a search, a tab for each pack and the grid. `select` hands over the emoji of the one
// that was chosen; the panel stays.
FocusScope {
    id: root

    signal select(string emoji)

    readonly property int columnWidth: width - 2 * Theme.columnSide(width)

    implicitHeight: 264
    implicitWidth: 400
    Component.onCompleted: picker.appear()

    StickerPickerView {
        id: picker
    }
    Rectangle {
        width: parent.width
        height: 1
        color: Theme.divider
    }
    SearchField {
        id: search
        anchors { top: parent.top; topMargin: Theme.gap12; horizontalCenter: parent.horizontalCenter }
        width: root.columnWidth
        focus: true
        placeholderText: "Поиск стикеров..."
        text: picker.searchText
        onTextEdited: picker.searchText = text
        Keys.onDownPressed: grid.forceActiveFocus(Qt.TabFocusReason)
    }
    ListView {
        id: tabs
        anchors { top: search.bottom; left: search.left; right: search.right }
        height: 48
        orientation: ListView.Horizontal
        spacing: Theme.gap4
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.Grouping
        Accessible.name: "Наборы"
        model: picker.packs

        delegate: Item {
            id: place

            required property stickerPack record
            required property int index

            width: chip.width
            height: tabs.height

            Chip {
                id: chip
                anchors.verticalCenter: parent.verticalCenter
                text: place.record.emoji
                font: Theme.headingFont
                checked: picker.selectedPack === place.record.id
                tip: place.record.name
                onActiveFocusChanged: if (activeFocus) tabs.positionViewAtIndex(place.index, ListView.Contain)
                onClicked: picker.selectPack(place.record.id)
            }
        }
    }
    GridView {
        id: grid
        anchors {
            top: tabs.bottom; bottom: parent.bottom; bottomMargin: Theme.gap8
            left: search.left; right: search.right
        }
        cellWidth: 50
        cellHeight: 50
        clip: true
        activeFocusOnTab: count > 0
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Стикеры"
        model: picker.stickers
        onCountChanged: currentIndex = count > 0 ? 0 : -1
        Keys.onReturnPressed: choose()
        Keys.onEnterPressed: choose()
        Keys.onSpacePressed: choose()
        T.ScrollBar.vertical: ScrollThumb {}

        function choose() {
            const cell = currentItem as StickerCell;
            if (cell)
                cell.chosen();
        }

        delegate: StickerCell {
            width: grid.cellWidth
            height: grid.cellHeight
            focused: grid.activeFocus && GridView.isCurrentItem
            onChosen: root.select(record.emoji)
        }
    }
}

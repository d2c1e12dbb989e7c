// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Interface
import OrvaneTalk.LocalNetwork

// Direct delivery on the local network: the switch, how this machine stands there, and who else is there.
Sheet {
    id: root

    required property P2PLanPanelView panel
    readonly property MessengerP2PLanService service: panel.service

    title: "P2P LAN"
    closeText: "Done"
    titleButtons: LinkButton {
        text: "Обновить"
        onClicked: root.panel.refreshPeers()
    }
    Component.onCompleted: panel.appear()

    PlainText {
        width: parent.width
        text: "Прямая передача сообщений в локальной сети без облака. Сервер используется только для discovery и сигналинга."
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    SwitchRow {
        id: enabledSwitch
        width: parent.width
        focus: true
        text: "P2P-режим (LAN)"
        checked: root.service.isEnabled
        // It shows what is, not what was asked for.
        onToggled: {
            root.panel.setEnabled(checked);
            checked = Qt.binding(() => root.service.isEnabled);
        }

        Spinner {
            anchors { right: parent.right; rightMargin: 40 + Theme.gap12; verticalCenter: parent.verticalCenter }
            running: root.panel.running > 0
        }
    }
    PlainText {
        width: parent.width
        visible: text
        text: root.service.lastError ?? ""
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        font: Theme.secondaryFont
        color: Theme.danger
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
    Rectangle {
        width: parent.width
        height: facts.implicitHeight + 2 * Theme.gap12
        visible: root.service.isEnabled
        radius: Theme.controlRadius
        color: Theme.surface

        Column {
            id: facts
            anchors { left: parent.left; right: parent.right; margins: Theme.gap16; verticalCenter: parent.verticalCenter }
            spacing: Theme.gap4

            Repeater {
                model: [
                    "Локальный IP: " + root.service.localIP,
                    "Подсеть: " + root.service.subnet,
                    "TCP связано: " + root.panel.linkCount
                ]
                delegate: PlainText {
                    required property string modelData

                    width: facts.width
                    text: modelData
                    font: Theme.secondaryFont
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
        }
    }
    PlainText {
        width: parent.width
        topPadding: Theme.gap12
        visible: root.service.isEnabled
        text: "Соседи в Wi‑Fi"
        font: Theme.strongBodyFont
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    PlainText {
        width: parent.width
        bottomPadding: Theme.gap8
        visible: root.service.isEnabled && list.count === 0
        text: "Никого не найдено — включите P2P на других устройствах в той же сети"
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        font: Theme.secondaryFont
        color: Theme.dimmed
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    ListView {
        id: list
        x: -Theme.gap8
        width: parent.width + 2 * Theme.gap8
        height: Math.min(contentHeight, 5 * Theme.rowHeight)
        visible: root.service.isEnabled && count > 0
        clip: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: "Соседи в Wi‑Fi"
        model: root.panel.peers
        T.ScrollBar.vertical: ScrollThumb {}

        delegate: LanPeerRow {
            width: list.width
        }
    }
}

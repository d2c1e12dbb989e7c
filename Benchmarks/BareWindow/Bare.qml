// SPDX-License-Identifier: MIT
import QtQuick

Window {
    width: 900
    height: 650
    visible: true
    title: "Bare window"
}

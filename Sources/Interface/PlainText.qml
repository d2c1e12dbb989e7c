// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// Every text that is only shown. Markup in it is never interpreted.
Text {
    color: Theme.text
    font: Theme.bodyFont
    textFormat: Text.PlainText
    elide: Text.ElideRight
}

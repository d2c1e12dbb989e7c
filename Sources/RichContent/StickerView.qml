// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A sticker in the conversation, without a bubble: the message's text in large. Anything may come as a
// sticker; what is no emoji wraps within `maximumWidth` and is cut after a few lines.
PlainText {
    id: root

    required property string code
    property int maximumWidth: 320
    readonly property int longest: 200

    width: Math.min(implicitWidth, maximumWidth)
    text: code.length > longest ? code.slice(0, longest) : code
    font.family: Theme.emojiFamily
    font.pixelSize: 64
    wrapMode: Text.Wrap
    maximumLineCount: 3
    Accessible.ignored: true
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// A sticker stands without a bubble.
Column {
    id: root

    required property MessageRow row

    StickerView {
        anchors.right: root.row.own ? parent.right : undefined
        code: root.row.text
    }
    MessageMeta {
        anchors.right: root.row.own ? parent.right : undefined
        row: root.row
        ink: Theme.dimmed
    }
}

// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.RichContent

// A poll with its time.
Rectangle {
    id: root

    required property MessageRow row

    width: Math.min(row.maximumWidth, 360)
    height: card.height + meta.height + 2 * Theme.gap12
    radius: Theme.bubbleRadius
    color: Theme.raised

    PollCard {
        id: card
        x: Theme.gap12
        y: Theme.gap8
        width: parent.width - 2 * Theme.gap12
        poll: root.row.poll
        currentUserID: root.row.screen.currentUserID
        onVote: poll => root.row.screen.votePoll(poll)
    }
    MessageMeta {
        id: meta
        anchors { right: parent.right; rightMargin: Theme.gap12; bottom: parent.bottom; bottomMargin: Theme.gap8 }
        row: root.row
        ink: Theme.dimmed
    }
}

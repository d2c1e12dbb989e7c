import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model
import OrvaneTalk.RichContent

// A poll with its time.
Rectangle {
    id: root

    required property MessengerChatView screen
    required property messengerMessage record
    required property bool own
    required property bool focused

    height: card.height + meta.height + 2 * Theme.gap12
    radius: Theme.bubbleRadius
    color: Theme.raised
    border { width: focused ? 2 : 0; color: Theme.accent }

    PollCard {
        id: card
        x: Theme.gap12
        y: Theme.gap8
        width: parent.width - 2 * Theme.gap12
        poll: root.record.poll
        currentUserID: root.screen.currentUserID
        onVote: poll => root.screen.votePoll(poll)
    }
    MessageMeta {
        id: meta
        anchors { right: parent.right; rightMargin: Theme.gap12; bottom: parent.bottom; bottomMargin: Theme.gap8 }
        record: root.record
        own: root.own
        ink: Theme.dimmed
    }
}

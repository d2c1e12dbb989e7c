// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.Model
import OrvaneTalk.RichContent

// A poll in a bubble, of any width. It is drawn for the ground `Theme.raised`, in own messages too: the accent
// marks the person's choice. `vote` hands over the poll with the choice that was made; the card shows it once
// that comes back as `poll`.
Column {
    id: root

    required property messengerPoll poll
    required property string currentUserID
    signal vote(messengerPoll poll)

    width: 320
    spacing: Theme.gap8
    Accessible.role: Accessible.Grouping
    Accessible.name: poll.question

    PollCardView {
        id: card
        poll: root.poll
        currentUserID: root.currentUserID
        onVote: poll => root.vote(poll)
    }
    PlainText {
        width: parent.width
        text: root.poll.question
        font: Theme.strongBodyFont
        wrapMode: Text.Wrap
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Column {
        width: parent.width
        spacing: Theme.gap4

        Repeater {
            model: card.options
            delegate: PollOptionRow {
                required property pollOption record

                width: parent ? parent.width : 0
                option: record
                votes: card.votes(record)
                total: card.total
                isSelected: card.isSelected(record)
                hasVoted: card.hasVoted
                onTap: card.tap(record.id)
            }
        }
    }
    Flow {
        width: parent.width
        spacing: Theme.gap12

        PlainText {
            text: card.total + " голосов"
            font: Theme.captionFont
            color: Theme.dimmed
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        PollMark {
            visible: root.poll.isAnonymous
            symbol: "eye.slash"
            text: "Анонимный"
        }
        PollMark {
            visible: root.poll.isMultipleChoice
            symbol: "checklist"
            text: "Несколько"
        }
    }
}

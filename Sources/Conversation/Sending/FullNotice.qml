// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// Why the end of a text is missing.
PlainText {
    required property WritingField field

    visible: field.isFull
    text: "A message holds " + WritingLimit.most + " characters. What is beyond that was left out."
    font: Theme.captionFont
    color: Theme.danger
    wrapMode: Text.Wrap
    elide: Text.ElideNone
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}

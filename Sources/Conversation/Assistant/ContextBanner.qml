// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// What the conversation is about, and the questions in it that nobody has answered.
Banner {
    id: root

    required property ChatAssistant assistant
    readonly property int unanswered: assistant.unansweredQuestions.length
    signal picked(string question)

    visible: assistant.chatContext !== undefined || unanswered > 0
    symbol: "sparkles"
    heading: unanswered > 0 ? "AI Context · " + unanswered + " unanswered" : "AI Context"
    onClosed: assistant.closeContext()

    FoldingText {
        width: parent.width
        visible: text
        text: root.assistant.chatContext ?? ""
        font: Theme.secondaryFont
        color: Theme.dimmed
    }
    Repeater {
        model: root.assistant.unansweredQuestions
        delegate: ActionButton {
            id: question

            required property string modelData

            width: parent.width
            implicitHeight: 32
            text: modelData + " Reply"
            onClicked: root.picked(modelData)
            background: Rectangle {
                radius: Theme.controlRadius
                color: question.hovered ? Theme.raised : "transparent"
                FocusRing { control: question }
            }
            contentItem: Item {
                Symbol {
                    id: mark
                    anchors.verticalCenter: parent.verticalCenter
                    name: "questionmark.circle"
                    size: 16
                    color: Theme.dimmed
                }
                PlainText {
                    anchors {
                        left: mark.right; leftMargin: Theme.gap8
                        right: reply.left; rightMargin: Theme.gap8
                        verticalCenter: parent.verticalCenter
                    }
                    text: question.modelData
                    font: Theme.secondaryFont
                }
                PlainText {
                    id: reply
                    anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                    text: "Reply"
                    font: Theme.secondaryFont
                    color: Theme.accent
                }
            }
        }
    }
}

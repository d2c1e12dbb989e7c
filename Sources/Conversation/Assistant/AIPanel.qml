// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// A line to the agent, and its last answer.
Rectangle {
    id: root

    required property ChatAssistant assistant

    visible: assistant.showAIPanel
    implicitHeight: visible ? column.implicitHeight + 2 * Theme.gap12 : 0
    color: Theme.surface
    onVisibleChanged: if (visible) field.forceActiveFocus()

    Column {
        id: column
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.columnSide(parent.width)
        spacing: Theme.gap8

        Flickable {
            width: parent.width
            height: Math.min(answer.implicitHeight, 180)
            visible: root.assistant.aiResponse !== undefined
            contentHeight: answer.implicitHeight
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            T.ScrollBar.vertical: ScrollThumb {}

            PlainText {
                id: answer
                width: parent.width - Theme.gap12
                text: root.assistant.aiResponse ?? ""
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                lineHeight: Theme.lineHeight
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        Row {
            width: parent.width
            spacing: Theme.gap8

            FormField {
                id: field
                width: parent.width - ask.width - Theme.gap8
                placeholderText: "Ask AI… /schedule, /search, /translate"
                text: root.assistant.aiRequest
                onTextChanged: root.assistant.aiRequest = text
                onAccepted: root.assistant.sendAgentMessage()
                Keys.onEscapePressed: root.assistant.showAIPanel = false
            }
            PrimaryButton {
                id: ask
                text: "Ask"
                busy: root.assistant.isAILoading
                enabled: field.text.trim() !== ""
                onClicked: root.assistant.sendAgentMessage()
            }
        }
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 1
        color: Theme.divider
    }
}

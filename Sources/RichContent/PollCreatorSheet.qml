// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface
import OrvaneTalk.Model
import OrvaneTalk.RichContent

// The form for a new poll. It hands the finished poll over by `created` and then closes, as it does when it is
// left.
Sheet {
    id: root

    required property string chatID
    required property string currentUserID
    signal created(messengerPoll poll)

    readonly property bool isPresented: creator.isPresented
    onIsPresentedChanged: if (!isPresented) close()

    title: "Новый опрос"
    closeText: "Закрыть"
    keepsText: creator.question !== "" || Array.from(creator.options).some(text => text !== "")

    function focusOption(index: int) {
        const row = fields.itemAt(index) as PollDraftOption;
        if (row)
            row.edit();
    }
    // The rows are made anew, so none of them may do it.
    function addOption() {
        creator.addOption();
        focusOption(creator.options.length - 1);
    }
    function removeOption(index: int) {
        creator.removeOption(index);
        focusOption(Math.min(index, creator.options.length - 1));
    }

    PollCreatorView {
        id: creator
        chatID: root.chatID
        currentUserID: root.currentUserID
        onCreated: poll => root.created(poll)
    }
    FormField {
        width: parent.width
        focus: true
        placeholderText: "Вопрос опроса..."
        text: creator.question
        onTextChanged: creator.question = text
        onAccepted: root.focusOption(0)
    }
    Column {
        width: parent.width
        spacing: Theme.gap8

        Repeater {
            id: fields
            model: creator.options.length
            delegate: PollDraftOption {
                width: parent ? parent.width : 0
                text: creator.options[index] ?? ""
                removable: creator.options.length > creator.fewestOptions
                onEdited: newText => creator.setOption(index, newText)
                onAccepted: root.focusOption(index + 1)
                onRemoved: root.removeOption(index)
            }
        }
    }
    ActionButton {
        id: add
        visible: creator.options.length < creator.mostOptions
        implicitHeight: 36
        implicitWidth: addLabel.implicitWidth + Theme.gap8
        font: Theme.bodyFont
        text: "Добавить вариант"
        onClicked: root.addOption()
        background: Item {
            FocusRing { control: add }
        }
        contentItem: Row {
            id: addLabel
            spacing: Theme.gap8

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                name: "plus.circle.fill"
                color: Theme.accent
            }
            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                text: add.text
                font.family: add.font.family
                font.pixelSize: add.font.pixelSize
                font.underline: add.hovered
                color: Theme.accent
                Accessible.ignored: true
            }
        }
    }
    SwitchRow {
        width: parent.width
        text: "Анонимный"
        checked: creator.isAnonymous
        onToggled: creator.isAnonymous = checked
    }
    SwitchRow {
        width: parent.width
        text: "Несколько ответов"
        checked: creator.isMultipleChoice
        onToggled: creator.isMultipleChoice = checked
    }
    buttons: PrimaryButton {
        text: "Создать"
        enabled: creator.canCreate
        onClicked: creator.createPoll()
    }
}

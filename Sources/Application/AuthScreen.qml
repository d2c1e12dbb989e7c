// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Application
import OrvaneTalk.Interface

// One form for sign-in and registration.
FocusScope {
    id: root

    required property AuthView screen

    readonly property bool complete: screen.username !== "" && screen.password !== ""

    function submit() {
        if (primary.enabled)
            screen.submit();
    }

    Flickable {
        anchors.fill: parent
        contentHeight: Math.max(height, form.implicitHeight + 2 * Theme.gap32)
        boundsBehavior: Flickable.StopAtBounds

        Column {
            id: form
            anchors.centerIn: parent
            width: Math.min(360, parent.width - 2 * Theme.gap16)
            spacing: Theme.gap12

            Symbol {
                anchors.horizontalCenter: parent.horizontalCenter
                name: "message.badge.filled"
                size: 64
                color: Theme.accent
            }
            PlainText {
                anchors.horizontalCenter: parent.horizontalCenter
                text: "OrvaneTalk"
                font: Theme.titleFont
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            PlainText {
                anchors.horizontalCenter: parent.horizontalCenter
                bottomPadding: Theme.gap16
                text: "Закрытая beta"
                font: Theme.secondaryFont
                color: Theme.dimmed
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            FormField {
                width: parent.width
                focus: true
                placeholderText: "Логин"
                text: root.screen.username
                onTextChanged: root.screen.username = text
                onAccepted: root.submit()
            }
            FormField {
                width: parent.width
                placeholderText: "Пароль"
                secret: true
                text: root.screen.password
                onTextChanged: root.screen.password = text
                onAccepted: root.submit()
            }
            FormField {
                width: parent.width
                visible: root.screen.isRegistering
                label: "Имя (отображаемое)"
                placeholderText: "Имя для отображения"
                text: root.screen.displayName
                onTextChanged: root.screen.displayName = text
                onAccepted: root.submit()
            }
            PlainText {
                width: parent.width
                visible: text
                text: root.screen.errorMessage
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                horizontalAlignment: Text.AlignHCenter
                font: Theme.secondaryFont
                color: Theme.danger
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
            SwitchRow {
                width: parent.width
                visible: root.screen.offersFile
                text: "Keep sign-ins in a file"
                checked: root.screen.keepInFile
                onToggled: root.screen.keepInFile = checked
            }
            PrimaryButton {
                id: primary
                width: parent.width
                text: root.screen.isRegistering ? "Создать аккаунт" : "Войти"
                busy: root.screen.isLoading
                enabled: root.complete && !root.screen.isLoading
                opacity: root.complete ? 1.0 : 0.6
                onClicked: root.submit()
            }
            LinkButton {
                anchors.horizontalCenter: parent.horizontalCenter
                text: root.screen.isRegistering ? "Уже есть аккаунт? Войти" : "Нет аккаунта? Зарегистрироваться"
                onClicked: root.screen.switchMode()
            }
        }
    }
}

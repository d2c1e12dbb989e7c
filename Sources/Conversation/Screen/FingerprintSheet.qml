// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// The user's own key in a form that two people can compare.
Sheet {
    id: root

    required property string fingerprint

    title: "Your key"
    closeText: "Done"
    width: parent ? Math.min(400, parent.width - 2 * Theme.gap32) : 400

    PlainText {
        width: parent.width
        text: "Read it out to the other person over another way. What they see as yours has to be the same."
        wrapMode: Text.Wrap
        font: Theme.secondaryFont
        color: Theme.dimmed
    }
    Rectangle {
        width: parent.width
        height: groups.implicitHeight + 2 * Theme.gap16
        radius: Theme.controlRadius
        color: Theme.surface

        Grid {
            id: groups
            anchors.centerIn: parent
            columns: 4
            columnSpacing: Theme.gap24
            rowSpacing: Theme.gap8
            Accessible.role: Accessible.StaticText
            Accessible.name: root.fingerprint

            Repeater {
                model: root.fingerprint.split(" ")
                delegate: PlainText {
                    required property string modelData

                    text: modelData
                    font: Theme.fixedFont
                    Accessible.ignored: true
                }
            }
        }
    }
}

// SPDX-License-Identifier: MIT
import QtQuick

// The yardstick of scrolling: a list whose rows are as large as a chat's and draw as much, with nothing behind them.
Item {
    id: root

    property int count: 0

    Rectangle {
        width: 320
        height: parent.height
        color: "#14161a"
    }
    ListView {
        width: 320
        height: parent.height
        clip: true
        reuseItems: true
        model: root.count
        delegate: Item {
            id: row

            required property int index

            width: 320
            height: 64

            Rectangle {
                x: 16
                anchors.verticalCenter: parent.verticalCenter
                width: 40
                height: 40
                radius: 20
                color: "#2565c7"

                Text {
                    anchors.centerIn: parent
                    text: "П"
                    color: "white"
                    font { pixelSize: 17; weight: Font.DemiBold }
                }
            }
            Text {
                x: 68
                y: 13
                width: 180
                text: "Планёрка " + row.index
                textFormat: Text.PlainText
                elide: Text.ElideRight
                color: "white"
                font.pixelSize: 15
            }
            Text {
                anchors { right: parent.right; rightMargin: 16 }
                y: 16
                text: "14.11.23"
                textFormat: Text.PlainText
                color: "#a0a0a0"
                font.pixelSize: 11
            }
            Text {
                x: 68
                y: 34
                width: 200
                text: "See you at eleven, bring the numbers."
                textFormat: Text.PlainText
                elide: Text.ElideRight
                color: "#a0a0a0"
                font.pixelSize: 13
            }
            Rectangle {
                anchors { right: parent.right; rightMargin: 16 }
                y: 34
                width: 20
                height: 20
                radius: 10
                color: "#2ea36a"
                visible: row.index % 5

                Text {
                    anchors.centerIn: parent
                    text: row.index % 5
                    color: "white"
                    font { pixelSize: 11; weight: Font.DemiBold }
                }
            }
        }
    }
}

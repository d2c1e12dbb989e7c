// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Interface

// A one-colour symbol by its name.
Image {
    id: root

    required property string name
    property color color: Theme.text
    property int size: 20

    width: size
    height: size
    sourceSize: Qt.size(size, size)
    source: "image://symbol/" + name + "/" + root.color.toString().slice(-6)
    Accessible.ignored: true
}

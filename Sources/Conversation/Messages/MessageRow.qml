// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// One message at its sender's side, with the day above it where a new one begins. What a kind of message looks
// like is its body.
FocusScope {
    id: root

    required property int index
    required property bool own
    required property string senderID
    required property string sender
    required property bool startsDay
    required property bool startsRun
    required property bool endsRun
    required property date timestamp
    required property string text
    required property bool isCut
    required property string quoteSender
    required property string quoteText
    required property string forwardedFrom
    required property string translation
    required property bool edited
    required property bool pinned
    required property bool starred
    required property string delivery
    required property var reactions
    required property var poll
    required property string spoken

    required property MessengerChatView screen
    default property alias body: body.data

    readonly property int columnWidth: width - 2 * Theme.columnSide(width)
    readonly property int maximumWidth: Math.round(columnWidth * 0.78)
    readonly property bool focused: activeFocus && ListView.isCurrentItem

    /// Whoever clicks a message goes on writing.
    signal tapped

    width: ListView.view ? ListView.view.width : 0
    implicitHeight: body.y + body.height + (reactionsRow.visible ? reactionsRow.height + Theme.gap4 : 0)
    Accessible.role: Accessible.ListItem
    Accessible.name: spoken
    Accessible.focusable: true
    Accessible.focused: focused

    /// A message that has just come springs up; one that comes into view again is there already.
    function enter() {
        Qt.callLater(ReadingOrder.lastFirst, parent);
        if (Date.now() - timestamp.getTime() < 500)
            entrance.start();
    }
    onIndexChanged: Qt.callLater(ReadingOrder.lastFirst, parent)
    Component.onCompleted: enter()
    ListView.onPooled: {
        entrance.stop();
        entrance.progress = 1;
        visible = false;
    }
    ListView.onReused: {
        opacity = 1;
        visible = true;
        enter();
    }

    Spring {
        id: entrance

        property real progress: 1

        target: entrance
        property: "progress"
        response: root.own ? 0.35 : 0.4
        dampingFraction: root.own ? 0.7 : 0.8
        easing.type: Easing.Linear
    }
    Loader {
        id: day
        anchors { left: parent.left; right: parent.right; top: parent.top }
        active: root.startsDay
        visible: active
        sourceComponent: DayBreak {
            time: root.timestamp
        }
    }
    Loader {
        active: root.sender !== "" && root.endsRun
        anchors { left: column.left; bottom: body.bottom }
        sourceComponent: Avatar {
            size: 32
            hueId: root.senderID
            name: root.sender
        }
    }
    Item {
        id: column
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.columnWidth
    }
    Rectangle {
        anchors { fill: body; margins: -3 }
        visible: root.focused
        radius: Theme.bubbleRadius + 3
        color: "transparent"
        border { width: 2; color: Theme.accent }
    }
    Item {
        id: body

        readonly property real grown: entrance.valueAt(entrance.progress)

        x: root.own ? column.x + column.width - width : column.x + (root.sender ? 32 + Theme.gap8 : 0)
        y: (root.startsDay ? day.height : 0) + (root.startsRun ? Theme.gap12 : 2)
        width: childrenRect.width
        height: childrenRect.height
        opacity: Math.min(1, grown * 2)
        scale: 0.8 + 0.2 * grown
        transformOrigin: root.own ? Item.BottomRight : Item.BottomLeft
    }
    Loader {
        id: reactionsRow
        active: root.reactions.length > 0
        visible: active
        y: body.y + body.height + Theme.gap4
        x: root.own ? column.x + column.width - width : body.x
        width: root.maximumWidth
        sourceComponent: ReactionsRow {
            labels: root.reactions
            own: root.own
        }
    }
    TapHandler {
        onTapped: root.tapped()
    }
}

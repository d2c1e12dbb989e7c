import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// One message at its sender's side, with the day above it where a new one begins.
FocusScope {
    id: root

    required property messengerMessage record
    required property int index
    required property MessengerChatView screen
    required property int columnWidth
    /// The number of messages, on which the neighbours of this one depend.
    required property int count

    readonly property bool own: record.senderID === screen.currentUserID
    readonly property messagePlacement placement: {
        void root.count;
        return screen.placement(index);
    }
    readonly property bool namesSender: !own && screen.chat.type === "group"

    implicitHeight: bubble.y + bubble.height
    Accessible.role: Accessible.ListItem
    Accessible.name: screen.spokenMessage(record)
    Accessible.focusable: true

    DayBreak {
        id: day
        anchors { left: parent.left; right: parent.right; top: parent.top }
        visible: root.placement.startsDay
        time: root.record.timestamp
    }
    Avatar {
        visible: root.namesSender && root.placement.endsRun
        anchors { left: column.left; bottom: bubble.bottom }
        size: 32
        hueId: root.record.senderID
        name: root.screen.senderName(root.record.senderID)
    }
    Item {
        id: column
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.columnWidth
    }
    MessageBubble {
        id: bubble
        y: (root.placement.startsDay ? day.height : 0) + (root.placement.startsRun ? Theme.gap12 : 2)
        x: root.own ? column.x + column.width - width : column.x + (root.namesSender ? 32 + Theme.gap8 : 0)
        maximumWidth: Math.round(root.columnWidth * 0.78)
        own: root.own
        endsRun: root.placement.endsRun
        sender: root.namesSender && root.placement.startsRun ? root.screen.senderName(root.record.senderID) : ""
        record: root.record
        focused: root.activeFocus && root.ListView.isCurrentItem
    }
}

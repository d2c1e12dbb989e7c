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
    readonly property int maximumWidth: Math.round(columnWidth * 0.78)
    readonly property bool focused: activeFocus && ListView.isCurrentItem

    signal menuRequested

    implicitHeight: body.y + body.height + (reactions.visible ? reactions.height + Theme.gap4 : 0)
    Accessible.role: Accessible.ListItem
    Accessible.name: screen.spokenMessage(record)
    Accessible.focusable: true
    Component.onCompleted: if (Date.now() - record.timestamp.getTime() < 500) entrance.start()

    Spring {
        id: entrance

        property real progress: 1

        target: entrance
        property: "progress"
        response: root.own ? 0.35 : 0.4
        dampingFraction: root.own ? 0.7 : 0.8
        easing.type: Easing.Linear
    }
    DayBreak {
        id: day
        anchors { left: parent.left; right: parent.right; top: parent.top }
        visible: root.placement.startsDay
        time: root.record.timestamp
    }
    Loader {
        active: root.namesSender && root.placement.endsRun
        anchors { left: column.left; bottom: body.bottom }
        sourceComponent: Avatar {
            size: 32
            hueId: root.record.senderID
            name: root.screen.senderName(root.record.senderID)
        }
    }
    Item {
        id: column
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.columnWidth
    }
    Loader {
        id: body

        readonly property real grown: entrance.valueAt(entrance.progress)

        y: (root.placement.startsDay ? day.height : 0) + (root.placement.startsRun ? Theme.gap12 : 2)
        x: root.own ? column.x + column.width - width : column.x + (root.namesSender ? 32 + Theme.gap8 : 0)
        opacity: Math.min(1, grown * 2)
        scale: 0.8 + 0.2 * grown
        transformOrigin: root.own ? Item.BottomRight : Item.BottomLeft
        sourceComponent: root.record.poll !== undefined ? poll : root.record.type === "sticker" ? sticker : bubble
    }
    ReactionsRow {
        id: reactions
        visible: root.record.reactions.length > 0
        y: body.y + body.height + Theme.gap4
        x: root.own ? column.x + column.width - width : body.x
        width: root.maximumWidth
        record: root.record
        own: root.own
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: root.menuRequested()
    }
    TapHandler {
        acceptedDevices: PointerDevice.TouchScreen
        onLongPressed: root.menuRequested()
    }

    Component {
        id: bubble

        MessageBubble {
            maximumWidth: root.maximumWidth
            own: root.own
            endsRun: root.placement.endsRun
            sender: root.namesSender && root.placement.startsRun ? root.screen.senderName(root.record.senderID) : ""
            screen: root.screen
            record: root.record
            focused: root.focused
        }
    }
    Component {
        id: sticker

        StickerBubble {
            screen: root.screen
            record: root.record
            own: root.own
            focused: root.focused
        }
    }
    Component {
        id: poll

        PollBubble {
            width: Math.min(root.maximumWidth, 360)
            screen: root.screen
            record: root.record
            own: root.own
            focused: root.focused
        }
    }
}

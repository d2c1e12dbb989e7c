import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// A message's text with its time, and for own ones how far it got.
Rectangle {
    id: root

    required property messengerMessage record
    required property int maximumWidth
    required property bool own
    required property bool endsRun
    required property bool focused
    /// Above the text; empty for own messages and within a run.
    required property string sender

    /// Characters of a very long message that are laid out; the rest comes on demand, a piece at a time.
    property int shownLength: pieceLength
    readonly property int pieceLength: 8000
    readonly property bool isCut: record.content.length > shownLength

    readonly property color ink: own ? Theme.onOwnBubble : Theme.text
    readonly property color dimmedInk: own ? Theme.dimmedOnOwnBubble : Theme.dimmed
    readonly property int roomForText: maximumWidth - 2 * Theme.gap12
    /// The time stands beside the end of the last line where there is room, else below it.
    readonly property bool timeFitsBeside:
        !isCut && content.lineCount <= 1 && content.implicitWidth + Theme.gap8 + meta.width <= roomForText

    width: 2 * Theme.gap12 + Math.max(name.visible ? Math.min(name.implicitWidth, roomForText) : 0,
                                      timeFitsBeside ? content.width + Theme.gap8 + meta.width
                                                     : Math.max(content.width, meta.width))
    height: meta.y + meta.height + Theme.gap8
    radius: Theme.bubbleRadius
    color: own ? Theme.ownBubble : Theme.raised

    // The corner that points at the sender.
    Rectangle {
        visible: root.endsRun
        x: root.own ? parent.width - width : 0
        y: parent.height - height
        width: Theme.bubbleRadius
        height: Theme.bubbleRadius
        radius: Theme.tailRadius
        color: root.color
    }
    Rectangle {
        anchors { fill: parent; margins: -3 }
        visible: root.focused
        radius: root.radius + 3
        color: "transparent"
        border { width: 2; color: Theme.accent }
    }
    PlainText {
        id: name
        visible: text
        x: Theme.gap12
        y: Theme.gap8
        width: root.width - 2 * Theme.gap12
        text: root.sender
        font.family: Theme.secondaryFont.family
        font.pixelSize: Theme.secondaryFont.pixelSize
        font.weight: Font.DemiBold
        color: Theme.accent
        Accessible.ignored: true
    }
    TextEdit {
        id: content
        x: Theme.gap12
        y: Theme.gap8 + (name.visible ? name.height + 2 : 0)
        width: Math.min(implicitWidth, root.roomForText)
        text: root.isCut ? root.record.content.slice(0, root.shownLength) + "…" : root.record.content
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        readOnly: true
        selectByMouse: true
        activeFocusOnPress: true
        activeFocusOnTab: false
        persistentSelection: false
        font: Theme.bodyFont
        color: root.ink
        selectionColor: root.own ? Theme.background : Theme.accent
        selectedTextColor: root.own ? Theme.text : Theme.onAccent
        Accessible.ignored: true
    }
    LinkButton {
        id: more
        visible: root.isCut
        x: Theme.gap4
        y: content.y + content.height
        text: "Show more"
        color: root.ink
        onClicked: root.shownLength += root.pieceLength
    }
    Row {
        id: meta
        x: root.width - width - Theme.gap12
        y: root.timeFitsBeside ? content.y + content.height - height
         : more.visible ? more.y + more.height : content.y + content.height + 2
        spacing: Theme.gap4

        PlainText {
            text: DisplayTimes.clock(root.record.timestamp)
            font: Theme.captionFont
            color: root.dimmedInk
            Accessible.ignored: true

            HoverHandler { id: hover }
        }
        Symbol {
            visible: root.own
            anchors.verticalCenter: parent.verticalCenter
            size: 12
            color: root.dimmedInk
            name: root.record.deliveryStatus === "sending" ? "clock"
                : root.record.deliveryStatus === "failed" ? "exclamationmark.circle.fill" : "checkmark"
        }
    }
    Rectangle {
        visible: hover.hovered
        anchors { bottom: meta.top; bottomMargin: Theme.gap4; right: meta.right }
        width: tip.implicitWidth + 2 * Theme.gap8
        height: tip.implicitHeight + Theme.gap8
        radius: Theme.controlRadius
        color: Theme.pressed
        z: 1

        PlainText {
            id: tip
            anchors.centerIn: parent
            text: hover.hovered ? DisplayTimes.full(root.record.timestamp) : ""
            font: Theme.captionFont
        }
    }
}

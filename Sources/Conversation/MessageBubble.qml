import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface
import OrvaneTalk.Model

// A message's text with what belongs to it: who it is from, what it answers, its translation, its time.
Rectangle {
    id: root

    required property messengerMessage record
    required property MessengerChatView screen
    required property int maximumWidth
    required property bool own
    required property bool endsRun
    required property bool focused
    /// Above the text; empty for own messages and within a run.
    required property string sender

    /// Characters of a very long message that are laid out; the rest comes on demand, a piece at a time.
    property int shownLength: pieceLength
    readonly property int pieceLength: 8000
    readonly property string text: screen.plainText(record.content)
    readonly property bool isCut: text.length > shownLength
    readonly property string translation: screen.translatedText[record.id] ?? ""
    readonly property messengerMessage replied: screen.messageWithId(record.replyToID ?? "")

    /// Where the pointer would lead.
    readonly property string link: (links.item as MessageLinks)?.target ?? ""

    readonly property color ink: own ? Theme.onOwnBubble : Theme.text
    readonly property color dimmedInk: own ? Theme.dimmedOnOwnBubble : Theme.dimmed
    readonly property int roomForText: maximumWidth - 2 * Theme.gap12
    /// The time stands beside the end of the last line where there is room, else below it.
    readonly property bool timeFitsBeside:
        !isCut && !translated.visible && content.lineCount <= 1
        && content.implicitWidth + Theme.gap8 + meta.width <= roomForText

    function roomOf(item) {
        return item.visible ? Math.min(item.implicitWidth, roomForText) : 0;
    }

    width: 2 * Theme.gap12 + Math.max(roomOf(name), roomOf(forwarded), roomOf(quote), roomOf(translated),
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
    Column {
        id: above
        x: Theme.gap12
        y: Theme.gap8
        width: root.width - 2 * Theme.gap12
        spacing: 2
        bottomPadding: height > 0 ? 2 : 0

        PlainText {
            id: name
            visible: text
            width: parent.width
            text: root.sender
            font: Theme.strongSecondaryFont
            color: Theme.accent
            Accessible.ignored: true
        }
        PlainText {
            id: forwarded
            visible: root.record.forwardedFrom !== undefined
            width: parent.width
            text: visible ? "Forwarded from " + root.record.forwardedFrom.originalSenderName : ""
            font: Theme.secondaryFont
            color: root.dimmedInk
            Accessible.ignored: true
        }
        Loader {
            id: quote
            active: root.replied.id !== ""
            visible: active
            width: parent.width
            sourceComponent: MessageQuote {
                sender: root.replied.senderID === root.screen.currentUserID ? "You"
                      : root.screen.senderName(root.replied.senderID)
                text: root.screen.plainText(root.replied.content).slice(0, 200).replace(/\s+/g, " ")
                ink: root.dimmedInk
                accent: root.own ? Theme.onOwnBubble : Theme.accent
            }
        }
    }
    TextEdit {
        id: content
        x: Theme.gap12
        y: above.y + above.height
        width: Math.min(implicitWidth, root.roomForText)
        text: root.isCut ? root.text.slice(0, root.shownLength) + "…" : root.text
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

        HoverHandler {
            id: over
            cursorShape: root.link ? Qt.PointingHandCursor : Qt.IBeamCursor
        }
        TapHandler {
            onTapped: if (root.link && content.selectedText === "") root.screen.openLink(root.link)
        }
    }
    Loader {
        id: links
        active: /https?:/i.test(content.text)
        sourceComponent: MessageLinks {
            textDocument: content.textDocument
            color: root.own ? Theme.onOwnBubble : Theme.accent
            underlined: root.own
            pointer: over.hovered ? over.point.position : Qt.point(-1, -1)
        }
    }
    Loader {
        active: root.link
        x: content.x
        y: content.y + over.point.position.y - height - Theme.gap12
        z: 1
        sourceComponent: HoverTip {
            text: root.link
        }
    }
    Loader {
        id: more
        active: root.isCut
        visible: active
        x: Theme.gap4
        y: content.y + content.height
        sourceComponent: LinkButton {
            text: "Show more"
            color: root.ink
            onClicked: root.shownLength += root.pieceLength
        }
    }
    Loader {
        id: translated
        active: root.translation !== ""
        visible: active
        x: Theme.gap12
        y: more.visible ? more.y + more.height : content.y + content.height + Theme.gap4
        width: root.width - 2 * Theme.gap12
        sourceComponent: Item {
            implicitWidth: mark.width + Theme.gap8 + translation.implicitWidth
            implicitHeight: translation.height + Theme.gap4

            Symbol {
                id: mark
                y: 2
                name: "globe"
                size: 14
                color: root.dimmedInk
            }
            PlainText {
                id: translation
                x: mark.width + Theme.gap8
                width: root.roomForText - x < implicitWidth ? root.roomForText - x : implicitWidth
                text: root.translation
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                color: root.ink
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
    MessageMeta {
        id: meta
        x: root.width - width - Theme.gap12
        y: root.timeFitsBeside ? content.y + content.height - height
         : translated.visible ? translated.y + translated.height
         : more.visible ? more.y + more.height : content.y + content.height + 2
        record: root.record
        own: root.own
        ink: root.dimmedInk
    }
}

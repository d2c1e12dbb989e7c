// SPDX-License-Identifier: MIT
import QtQuick
import OrvaneTalk.Conversation
import OrvaneTalk.Interface

// A message's text with what belongs to it: who it is from, what it answers, its translation, its time.
Rectangle {
    id: root

    required property MessageRow row
    /// The rest of a long text is wanted.
    signal moreRequested
    /// Something is selected in the text, or no longer.
    signal selected(TextEdit content)

    readonly property bool own: row.own
    /// Where the pointer would lead.
    readonly property string link: (links.item as MessageLinks)?.target ?? ""

    readonly property color ink: own ? Theme.onOwnBubble : Theme.text
    readonly property color dimmedInk: own ? Theme.dimmedOnOwnBubble : Theme.dimmed
    readonly property int roomForText: row.maximumWidth - 2 * Theme.gap12
    /// The time stands beside the end of the last line where there is room, else below it.
    readonly property bool timeFitsBeside:
        !row.isCut && !translated.visible && content.lineCount <= 1
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
        visible: root.row.endsRun
        x: root.own ? parent.width - width : 0
        y: parent.height - height
        width: Theme.bubbleRadius
        height: Theme.bubbleRadius
        radius: Theme.tailRadius
        color: root.color
    }
    // However many marks are stacked on a character, they stay in the bubble.
    Item {
        anchors.fill: parent
        clip: true

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
                text: root.row.startsRun ? root.row.sender : ""
                font: Theme.strongSecondaryFont
                color: Theme.accent
                Accessible.ignored: true
            }
            PlainText {
                id: forwarded
                visible: root.row.forwardedFrom !== ""
                width: parent.width
                text: "Forwarded from " + root.row.forwardedFrom
                font: Theme.secondaryFont
                color: root.dimmedInk
                Accessible.ignored: true
            }
            Loader {
                id: quote
                active: root.row.quoteSender !== ""
                visible: active
                width: parent.width
                sourceComponent: MessageQuote {
                    sender: root.row.quoteSender
                    text: root.row.quoteText
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
            text: root.row.isCut ? root.row.text + "…" : root.row.text
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            readOnly: true
            selectByMouse: true
            // What is typed next goes to the input, whatever is selected here.
            activeFocusOnPress: false
            activeFocusOnTab: false
            persistentSelection: true
            font: Theme.bodyFont
            color: root.ink
            selectionColor: root.own ? Theme.background : Theme.accent
            selectedTextColor: root.own ? Theme.text : Theme.onAccent
            Accessible.ignored: true
            onSelectedTextChanged: root.selected(content)
            // The row shows another message now.
            onTextChanged: deselect()

            HoverHandler {
                id: over
                cursorShape: root.link ? Qt.PointingHandCursor : Qt.IBeamCursor
            }
            TapHandler {
                onTapped: {
                    if (root.link && content.selectedText === "")
                        root.row.screen.openLink(root.link);
                    root.row.tapped();
                }
            }
        }
        Loader {
            id: more
            active: root.row.isCut
            visible: active
            x: Theme.gap4
            y: content.y + content.height
            sourceComponent: LinkButton {
                text: "Show more"
                color: root.ink
                onClicked: root.moreRequested()
            }
        }
        Loader {
            id: translated
            active: root.row.translation !== ""
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
                    text: root.row.translation
                    wrapMode: Text.Wrap
                    elide: Text.ElideNone
                    color: root.ink
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
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
        sourceComponent: Tip {
            parent: content
            y: over.point.position.y - height - Theme.gap12
            text: root.link
        }
    }
    MessageMeta {
        id: meta
        x: root.width - width - Theme.gap12
        y: root.timeFitsBeside ? content.y + content.height - height
         : translated.visible ? translated.y + translated.height
         : more.visible ? more.y + more.height : content.y + content.height + 2
        row: root.row
        ink: root.dimmedInk
    }
}

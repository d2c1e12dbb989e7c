// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessageLinks.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextDocument>
#include <QTextLayout>

namespace orvane {

MessageLinks::MessageLinks(QObject *parent)
    : QSyntaxHighlighter(parent) {}

void MessageLinks::setTextDocument(QQuickTextDocument *document) {
    m_textDocument = document;
    setDocument(document ? document->textDocument() : nullptr);
    Q_EMIT changed();
}

void MessageLinks::setColor(const QColor &color) {
    m_color = color;
    rehighlight();
    Q_EMIT changed();
}

void MessageLinks::setUnderlined(bool underlined) {
    m_underlined = underlined;
    rehighlight();
    Q_EMIT changed();
}

void MessageLinks::setPointer(QPointF pointer) {
    m_pointer = pointer;
    QString target;
    int start = -1;
    const QTextDocument *text = document();
    const int position = text ? text->documentLayout()->hitTest(pointer, Qt::ExactHit) : -1;
    if (position >= 0) {
        const QTextBlock block = text->findBlock(position);
        const int place = position - block.position();
        // Only links have formats here, and the pointer moves too often to look for them again.
        for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
            if (place < range.start || place >= range.start + range.length)
                continue;
            start = block.position() + range.start;
            for (const Link &link : Link::in(block.text().mid(range.start, range.length)))
                target = link.address();
        }
    }
    if (start == m_targetStart && target == m_target)
        return;
    const QTextBlock left = text ? text->findBlock(m_targetStart) : QTextBlock();
    m_target = target;
    m_targetStart = start;
    if (left.isValid())
        rehighlightBlock(left);
    if (start >= 0)
        rehighlightBlock(text->findBlock(start));
    Q_EMIT targetChanged();
}

void MessageLinks::highlightBlock(const QString &text) {
    for (const Link &link : Link::in(text)) {
        QTextCharFormat format;
        format.setForeground(m_color);
        format.setFontUnderline(m_underlined || currentBlock().position() + link.start == m_targetStart);
        setFormat(int(link.start), int(link.length), format);
    }
}

} // namespace orvane

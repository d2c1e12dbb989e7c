// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Messages/Links.h"

#include <QColor>
#include <QPointF>
#include <QQuickTextDocument>
#include <QSyntaxHighlighter>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// Shows the links of a plain text without making markup of it, and tells which one the pointer is over.
/// Main thread.
class MessageLinks : public QSyntaxHighlighter {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument *textDocument READ textDocument WRITE setTextDocument NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
    /// For a text on whose ground no other colour stands out; others are underlined under the pointer only.
    Q_PROPERTY(bool underlined READ underlined WRITE setUnderlined NOTIFY changed)
    /// In the text's own coordinates.
    Q_PROPERTY(QPointF pointer READ pointer WRITE setPointer NOTIFY targetChanged)
    /// The address of the link under the pointer; empty when there is none.
    Q_PROPERTY(QString target READ target NOTIFY targetChanged)

public:
    explicit MessageLinks(QObject *parent = nullptr);

    QQuickTextDocument *textDocument() const { return m_textDocument; }
    void setTextDocument(QQuickTextDocument *document);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    bool underlined() const { return m_underlined; }
    void setUnderlined(bool underlined);
    QPointF pointer() const { return m_pointer; }
    void setPointer(QPointF pointer);
    QString target() const { return m_target; }

Q_SIGNALS:
    void changed();
    void targetChanged();

protected:
    void highlightBlock(const QString &text) override;

private:
    QQuickTextDocument *m_textDocument = nullptr;
    QColor m_color;
    bool m_underlined = false;
    QPointF m_pointer;
    QString m_target;
    /// Where in the document the link under the pointer begins, or -1.
    int m_targetStart = -1;
};

} // namespace orvane

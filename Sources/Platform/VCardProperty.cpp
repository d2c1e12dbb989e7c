// SPDX-License-Identifier: MIT
#include "Platform/VCardProperty.h"

#include <QStringDecoder>

#include <algorithm>

namespace orvane {

namespace {

/// Where the byte first stands outside of quotes, or -1.
qsizetype unquoted(const QByteArray &text, char wanted, qsizetype from) {
    bool quoted = false;
    for (qsizetype index = from; index < text.size(); ++index) {
        if (text.at(index) == '"')
            quoted = !quoted;
        else if (text.at(index) == wanted && !quoted)
            return index;
    }
    return -1;
}

QList<QByteArray> splitUnquoted(const QByteArray &text, char separator) {
    QList<QByteArray> pieces;
    qsizetype from = 0;
    for (qsizetype to = unquoted(text, separator, 0); to >= 0; to = unquoted(text, separator, from)) {
        pieces.append(text.mid(from, to - from));
        from = to + 1;
    }
    pieces.append(text.mid(from));
    return pieces;
}

bool isName(const QByteArray &text) {
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    });
}

QString decoded(const QByteArray &bytes, const QByteArray &charset) {
    if (!charset.isEmpty()) {
        QStringDecoder decoder(charset.constData());
        if (decoder.isValid())
            return decoder.decode(bytes);
    }
    return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

} // namespace

std::optional<VCardProperty> VCardProperty::parse(const QByteArray &line) {
    qsizetype colon = unquoted(line, ':', 0);
    // A quote that never ends is just a character.
    if (colon < 0)
        colon = line.indexOf(':');
    if (colon < 0)
        return std::nullopt;
    QList<QByteArray> head = splitUnquoted(line.left(colon), ';');
    VCardProperty property;
    property.name = head.takeFirst().trimmed().toUpper();
    if (const qsizetype dot = property.name.lastIndexOf('.'); dot >= 0) {
        property.group = property.name.left(dot);
        property.name = property.name.mid(dot + 1);
    }
    if (!isName(property.name))
        return std::nullopt;
    for (const QByteArray &parameter : head)
        property.addParameter(parameter);
    property.m_value = line.mid(colon + 1);
    return property;
}

void VCardProperty::addParameter(const QByteArray &parameter) {
    const qsizetype equals = parameter.indexOf('=');
    const QByteArray key = equals < 0 ? QByteArray() : parameter.left(equals).trimmed().toUpper();
    QByteArray value = parameter.mid(equals + 1).trimmed();
    value.replace('"', "");
    // Version 2.1 leaves the names of the parameters out.
    const bool isEncoding = key.isEmpty() || key == "ENCODING";
    const QByteArray upper = value.toUpper();
    if (isEncoding && (upper == "BASE64" || upper == "B"))
        isBase64 = true;
    else if (isEncoding && upper == "QUOTED-PRINTABLE")
        m_isQuotedPrintable = true;
    else if (key == "CHARSET")
        m_charset = value;
    else if (key.isEmpty() || key == "TYPE")
        types.append(value.toLower().split(','));
}

QByteArray VCardProperty::bytes() const {
    if (isBase64)
        return QByteArray::fromBase64(m_value);
    return m_isQuotedPrintable ? QByteArray::fromPercentEncoding(m_value, '=') : m_value;
}

QString VCardProperty::text() const {
    return decoded(bytes(), m_charset);
}

QStringList VCardProperty::fields() const {
    QStringList result{QString()};
    bool escaped = false;
    for (const QChar c : text()) {
        if (escaped)
            result.last().append(c == u'n' || c == u'N' ? u'\n' : c);
        else if (c == u';')
            result.append(QString());
        else if (c != u'\\')
            result.last().append(c);
        escaped = !escaped && c == u'\\';
    }
    return result;
}

} // namespace orvane

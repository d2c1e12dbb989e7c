// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvane {

/// One content line of a vCard: `group.NAME;PARAMETER=value:value` (vCard 2.1, RFC 2426, RFC 6350). Pure.
class VCardProperty {
public:
    /// Absent for a line that is none.
    static std::optional<VCardProperty> parse(const QByteArray &line);

    /// Upper case; the group is empty for most.
    QByteArray group;
    QByteArray name;
    /// Lower case: "cell", "home"…
    QList<QByteArray> types;
    bool isBase64 = false;

    /// The value with its transfer encoding undone.
    QByteArray bytes() const;
    /// Decoded by its character set. Without one: UTF-8, and Latin-1 where that can't be.
    QString text() const;
    /// The fields between semicolons, unescaped. There is at least one.
    QStringList fields() const;

private:
    void addParameter(const QByteArray &parameter);

    bool m_isQuotedPrintable = false;
    QByteArray m_charset;
    QByteArray m_value;
};

} // namespace orvane

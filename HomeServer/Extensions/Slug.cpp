// SPDX-License-Identifier: MIT
#include "HomeServer/Extensions/Slug.h"

#include <QRegularExpression>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

QString slugOf(const QString &name, const QString &otherwise) {
    static const QRegularExpression other(u"[^\\p{L}\\p{N}]+"_s);
    QString slug = name.toLower().replace(other, u" "_s).trimmed().left(40).trimmed();
    slug.replace(u' ', u'_');
    return slug.isEmpty() ? otherwise : slug;
}

} // namespace orvane::homeserver

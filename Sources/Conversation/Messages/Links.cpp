// SPDX-License-Identifier: MIT
#include "Conversation/Messages/Links.h"

#include <QDesktopServices>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Without what a sentence puts after an address. A closing bracket stays where its opening one is inside.
QStringView withoutSentence(QStringView address) {
    // Counted once: an address may be nothing but brackets.
    qsizetype openRound = address.count(u'(') - address.count(u')');
    qsizetype openSquare = address.count(u'[') - address.count(u']');
    while (!address.isEmpty()) {
        const QChar last = address.back();
        if (!QStringView(u".,:;!?)]}'\"»”’…*_~").contains(last) || (last == u')' && openRound >= 0) ||
            (last == u']' && openSquare >= 0))
            break;
        openRound += last == u')';
        openSquare += last == u']';
        address.chop(1);
    }
    return address;
}

} // namespace

QList<Link> Link::in(const QString &text) {
    // Neither blanks nor characters that nobody sees, which could turn an address around.
    static const QRegularExpression pattern(uR"((?<![\p{L}\p{N}])https?://[^\s\p{C}<>"«“]+)"_s,
                                            QRegularExpression::CaseInsensitiveOption |
                                                QRegularExpression::UseUnicodePropertiesOption);
    QList<Link> found;
    for (auto matches = pattern.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const QStringView written = withoutSentence(match.capturedView());
        const QUrl target(written.toString(), QUrl::StrictMode);
        if (target.isValid() && !target.host().isEmpty() && target.userInfo().isEmpty())
            found.append({match.capturedStart(), written.size(), target});
    }
    return found;
}

QStringList Link::firstAddressesIn(const QString &text) {
    constexpr int mostLinks = 3;
    constexpr int searchedLength = 100'000;
    QStringList addresses;
    for (const Link &link : in(text.left(searchedLength)))
        addresses.append(link.address());
    addresses.removeDuplicates();
    return addresses.mid(0, mostLinks);
}

void Link::open(const QString &address) {
    const QList<Link> links = in(address);
    if (links.size() == 1 && links.first().length == address.size())
        QDesktopServices::openUrl(links.first().target);
}

} // namespace orvane

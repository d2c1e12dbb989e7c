// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QUrl>

namespace orvane {

/// A web address in a text, with what it really leads to. Any thread.
struct Link {
    qsizetype start = 0;
    qsizetype length = 0;
    QUrl target;

    /// As people should see it before they follow it: whole, with the host as the network spells it.
    QString address() const { return target.toString(QUrl::FullyEncoded); }

    /// Every http and https address that is written out, in order. What stands at the end of a sentence is no
    /// part of it, and one with a name or a password before its host is none: it pretends to lead elsewhere.
    static QList<Link> in(const QString &text);

    /// The first addresses that a text leads to, each once; no more than a menu should begin with.
    static QStringList firstAddressesIn(const QString &text);

    /// Hands an address to the desktop, if it is one that in() would find.
    static void open(const QString &address);
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Platform/EvolutionSources.h"

#include <algorithm>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

// Further up than any account goes, and an end to those that are their own parents.
constexpr int mostAncestors = 10;

struct Source {
    bool isAddressBook = false;
    bool isDirectory = false;
    bool isEnabled = true;
    QString parent;
};

Source sourceIn(const QString &keyFile) {
    Source source;
    QString group;
    for (const QString &untrimmed : keyFile.split(u'\n')) {
        const QString line = untrimmed.trimmed();
        const QString value = line.section(u'=', 1).trimmed();
        if (line.startsWith(u'['))
            group = line;
        else if (group == "[Data Source]"_L1 && line.startsWith("Enabled="_L1))
            source.isEnabled = value == "true"_L1;
        else if (group == "[Data Source]"_L1 && line.startsWith("Parent="_L1))
            source.parent = value;
        else if (group == "[Address Book]"_L1 && line.startsWith("BackendName="_L1))
            source.isDirectory = value == "ldap"_L1;
        source.isAddressBook |= group == "[Address Book]"_L1;
    }
    return source;
}

} // namespace

QStringList evolutionAddressBooks(const QHash<QString, QString> &sources) {
    QHash<QString, Source> read;
    for (auto source = sources.cbegin(); source != sources.cend(); ++source)
        read.insert(source.key(), sourceIn(source.value()));
    const auto isOn = [&read](const Source &book) {
        bool on = book.isEnabled;
        QString parent = book.parent;
        for (int step = 0; on && step < mostAncestors && read.contains(parent); ++step) {
            on = read.value(parent).isEnabled;
            parent = read.value(parent).parent;
        }
        return on;
    };
    QStringList books;
    for (auto source = read.cbegin(); source != read.cend(); ++source)
        if (source->isAddressBook && !source->isDirectory && isOn(*source))
            books.append(source.key());
    std::sort(books.begin(), books.end());
    return books;
}

} // namespace orvane

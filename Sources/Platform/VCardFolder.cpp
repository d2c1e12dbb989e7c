// SPDX-License-Identifier: MIT
#include "Platform/VCardFolder.h"

#include "Platform/Folders.h"
#include "Platform/VCard.h"

#include <QCoroFuture>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QtConcurrentRun>

#include <algorithm>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

bool isOpen(const QStringList &folders) {
    return std::none_of(folders.begin(), folders.end(), [](const QString &folder) {
        const QFileInfo info(folder);
        return info.isDir() && !(info.isReadable() && info.isExecutable());
    });
}

QStringList filesIn(const QString &folder) {
    QStringList files;
    // Regular files alone: opening a pipe would wait for its other end.
    QDirIterator iterator(folder, {u"*.vcf"_s, u"*.vcard"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(iterator.next());
    files.sort();
    return files;
}

QList<AddressBookPerson> peopleIn(const QStringList &folders) {
    QList<AddressBookPerson> people;
    for (const QString &folder : folders) {
        for (const QString &name : filesIn(folder)) {
            QFile file(name);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            for (const VCard &card : readVCards(file))
                people.append(card.person);
        }
    }
    return people;
}

} // namespace

QStringList VCardFolder::usualFolders() {
    return {folders::data() + u"/contacts"_s,
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/contacts"_s};
}

QCoro::Task<bool> VCardFolder::requestAccess() {
    const bool open = co_await QtConcurrent::run(&isOpen, m_folders);
    co_return open;
}

QCoro::Task<QList<AddressBookPerson>> VCardFolder::people() {
    const QList<AddressBookPerson> found = co_await QtConcurrent::run(&peopleIn, m_folders);
    co_return found;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "HomeServer/Files/FileStore.h"

#include "HomeServer/Http/Message.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <stdexcept>

namespace orvane::homeserver {

FileStore::FileStore(const QString &folder, qint64 mostBytes)
    : m_folder(folder)
    , m_mostBytes(mostBytes) {
    if (!QDir().mkpath(folder))
        throw std::runtime_error("the folder for uploads can't be made");
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files))
        m_usedBytes += file.size();
}

void FileStore::write(const QString &id, const QByteArray &bytes) {
    if (m_usedBytes + bytes.size() > m_mostBytes)
        throw Refusal(507, "storage_full");
    QSaveFile file(pathOf(id));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error("an upload could not be written");
    m_usedBytes += bytes.size();
}

QByteArray FileStore::read(const QString &id) const {
    QFile file(pathOf(id));
    if (!file.open(QIODevice::ReadOnly))
        refuseNotFound();
    return file.readAll();
}

void FileStore::remove(const QString &id) {
    const qint64 size = QFileInfo(pathOf(id)).size();
    if (QFile::remove(pathOf(id)))
        m_usedBytes -= size;
}

QStringList FileStore::ids() const {
    return QDir(m_folder).entryList(QDir::Files);
}

QString FileStore::pathOf(const QString &id) const {
    return QDir(m_folder).filePath(id);
}

} // namespace orvane::homeserver

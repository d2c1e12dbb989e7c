// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

namespace orvane::homeserver {

// The uploads, one file each, named by ids of this server's own making, in one folder.
class FileStore {
public:
    FileStore(const QString &folder, qint64 mostBytes);

    // Writes a file whole or not at all. Refuses with 507 when the store is full.
    void write(const QString &id, const QByteArray &bytes);

    // Refuses with 404 when there is no such file.
    QByteArray read(const QString &id) const;

    void remove(const QString &id);

    QStringList ids() const;

private:
    QString pathOf(const QString &id) const;

    QString m_folder;
    qint64 m_mostBytes;
    qint64 m_usedBytes = 0;
};

} // namespace orvane::homeserver

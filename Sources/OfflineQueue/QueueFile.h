// SPDX-License-Identifier: MIT
#pragma once

#include "OfflineQueue/QueueForm.h"
#include "Platform/SecretStore.h"

#include <QList>
#include <QString>

namespace orvane {

/// The queue on the disk, sealed with a key that the secret store keeps. Every call asks the store for the
/// key anew, and says in a log line how it went. Waits for disk and store: not for the main thread; one call
/// at a time.
class QueueFile {
public:
    /// `folder` is made with the first load.
    QueueFile(const QString &folder, SecretStore &store);

    /// What was saved last; empty where that can't be read. A file that can't be opened stays as it is. Where
    /// there is no sealed file, a plain one of an earlier version is read and replaced by a sealed one.
    QList<QueuedMessage> loadFromDisk() const;

    /// All of it or nothing: the file holds the list of before or this one, whatever happens meanwhile. A
    /// plain file of an earlier version goes.
    void saveToDisk(const QList<QueuedMessage> &pending) const;

private:
    QList<QueuedMessage> decodeEncrypted(const QByteArray &data) const;
    QList<QueuedMessage> migrate() const;
    /// Persists them, and removes the file of before.
    void replaceLegacy(const QList<QueuedMessage> &messages) const;
    void persist(const QList<QueuedMessage> &messages) const;
    SecretBytes loadOrCreateKey() const;

    QString m_folder;
    QString m_queueFile;
    QString m_legacyQueueFile;
    SecretStore &m_store;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "OfflineQueue/QueueFile.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Server/ApiError.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <unistd.h>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

const auto service = u"com.orvanetalk.offline-queue"_s;
const auto account = u"aes-gcm-key-v1"_s;
const auto label = u"OrvaneTalk encrypted offline queue"_s;

constexpr auto wordsMightTell = "its words might tell what is in the file";

std::optional<QByteArray> contentsOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    return file.error() == QFileDevice::NoError ? std::optional(bytes) : std::nullopt;
}

// A renamed file has its new name for good only when its folder is on the disk.
void syncFolder(const QString &folder) {
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

void removeIfThere(const QString &path) {
    QFile file(path);
    if (file.exists() && !file.remove())
        throw FileError(file.errorString());
}

} // namespace

QueueFile::QueueFile(const QString &folder, SecretStore &store)
    : m_folder(folder)
    , m_queueFile(folder + u"/offline_queue.enc"_s)
    , m_legacyQueueFile(folder + u"/offline_queue.json"_s)
    , m_store(store) {}

QList<QueuedMessage> QueueFile::loadFromDisk() const {
    QDir().mkpath(m_folder);
    const auto sealed = contentsOf(m_queueFile);
    if (!sealed)
        return migrate();
    const auto messages = dropped([&] { return decodeEncrypted(*sealed); }, wordsMightTell);
    logLine(messages ? u"[OfflineQueue] Loaded %1 encrypted queued messages"_s.arg(messages->size())
                     : u"[OfflineQueue] Encrypted queue could not be opened"_s);
    return messages.value_or(QList<QueuedMessage>());
}

QList<QueuedMessage> QueueFile::decodeEncrypted(const QByteArray &data) const {
    const primitives::Box box = queueform::boxOf(data);
    const SecretBytes plain = primitives::open(loadOrCreateKey().view(), box);
    return queueform::decode(
        QByteArray::fromRawData(reinterpret_cast<const char *>(plain.data()), plain.size()));
}

QList<QueuedMessage> QueueFile::migrate() const {
    const auto plain = contentsOf(m_legacyQueueFile);
    if (!plain)
        return {};
    const auto messages =
        dropped([&] { return queueform::decode(*plain); }, "the file stays for whoever can read it");
    if (!messages)
        return {};
    const bool migrated = dropped([&] { replaceLegacy(*messages); }, "the next save tries again");
    logLine(migrated
                ? u"[OfflineQueue] Migrated %1 queued messages to encrypted storage"_s.arg(messages->size())
                : u"[OfflineQueue] Encryption migration deferred"_s);
    return *messages;
}

void QueueFile::saveToDisk(const QList<QueuedMessage> &pending) const {
    if (!dropped([&] { replaceLegacy(pending); }, wordsMightTell))
        logLine(u"[OfflineQueue] Encrypted queue save failed"_s);
}

void QueueFile::replaceLegacy(const QList<QueuedMessage> &messages) const {
    persist(messages);
    removeIfThere(m_legacyQueueFile);
}

void QueueFile::persist(const QList<QueuedMessage> &messages) const {
    const QByteArray json = queueform::encode(messages);
    const QByteArray bytes = queueform::seal(json, loadOrCreateKey());
    QSaveFile file(m_queueFile);
    if (!file.open(QIODevice::WriteOnly) ||
        !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) ||
        file.write(bytes) != bytes.size() || !file.commit())
        throw FileError(file.errorString());
    syncFolder(m_folder);
}

SecretBytes QueueFile::loadOrCreateKey() const {
    SecretStore::Match match = m_store.copyMatching(service, account);
    if (match.status == SecretStatus::itemNotFound) {
        SecretBytes key = primitives::randomKey();
        const qint32 status = m_store.add(service, account, label, key.view().toByteArray());
        if (status != SecretStatus::success)
            throw OfflineQueueStorageError::keychain(status);
        return key;
    }
    if (match.status != SecretStatus::success || match.data.size() != primitives::keySize)
        throw OfflineQueueStorageError::keychain(match.status);
    SecretBytes key(match.data);
    wipe(match.data);
    return key;
}

} // namespace orvane

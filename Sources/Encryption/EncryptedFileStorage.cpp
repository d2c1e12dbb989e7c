// SPDX-License-Identifier: MIT
#include "Encryption/EncryptedFileStorage.h"

#include "Base/Task.h"
#include "Encryption/Primitives.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace orvane {

EncryptedFileStorage::EncryptedFileStorage(const QString &homeFolder)
    : m_baseDir(homeFolder + u"/.orvanetalk/chats"_s) {
    QDir().mkpath(m_baseDir);
}

EncryptedFileStorage &EncryptedFileStorage::shared() {
    static auto *storage = new EncryptedFileStorage(QDir::homePath());
    return *storage;
}

SecretBytes EncryptedFileStorage::deriveKey(const QByteArray &material, const QByteArray &identifier) {
    return primitives::hkdfSha256(material, primitives::sha256(identifier), "orvanetalk-storage",
                                  primitives::keySize);
}

void EncryptedFileStorage::configure(const QByteArray &material) {
    m_encryptionKey = deriveKey(material, "com.orvanetalk.OrvaneTalk");
}

bool EncryptedFileStorage::save(const QString &chatId, const QByteArray &blob) {
    if (!isConfigured())
        return false;
    const primitives::Box box = primitives::seal(
        m_encryptionKey.view(), primitives::randomBytes(primitives::nonceSize), blob, chatId.toUtf8());
    QSaveFile file(fileOf(chatId));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(box.nonce + box.ciphertext + box.tag);
    return file.commit();
}

std::optional<QByteArray> EncryptedFileStorage::load(const QString &chatId) const {
    QFile file(fileOf(chatId));
    if (!isConfigured() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (bytes.size() < primitives::nonceSize + primitives::tagSize)
        return std::nullopt;
    const primitives::Box box{bytes.first(primitives::nonceSize),
                              bytes.sliced(primitives::nonceSize).chopped(primitives::tagSize),
                              bytes.last(primitives::tagSize)};
    const auto open = [&] {
        return primitives::open(m_encryptionKey.view(), box, chatId.toUtf8()).view().toByteArray();
    };
    return dropped(open, "what can't be opened counts as absent");
}

void EncryptedFileStorage::remove(const QString &chatId) {
    QFile::remove(fileOf(chatId));
}

QString EncryptedFileStorage::fileOf(const QString &chatId) const {
    return m_baseDir + u'/' + QString::fromLatin1(primitives::sha256(chatId.toUtf8()).toHex());
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/SecretBytes.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// Keeps one blob of bytes for each chat.
class SecureStorageProvider {
public:
    virtual ~SecureStorageProvider() = default;

    /// False when nothing was kept; what was kept before then stays.
    virtual bool save(const QString &chatId, const QByteArray &blob) = 0;
    /// Absent when there is none, or none that can be read.
    virtual std::optional<QByteArray> load(const QString &chatId) const = 0;
    virtual void remove(const QString &chatId) = 0;

protected:
    SecureStorageProvider() = default;
    SecureStorageProvider(const SecureStorageProvider &) = default;
    SecureStorageProvider &operator=(const SecureStorageProvider &) = default;
};

/// Blobs in files of ".orvanetalk/chats" under the home folder, sealed with AES-256-GCM. The name of a file
/// is the SHA-256 of the chat's id; its bytes are nonce, ciphertext and tag. Main thread.
///
///     unconfigured (nothing is kept) --(configure)--> configured
class EncryptedFileStorage : public SecureStorageProvider {
public:
    /// Makes the folder; a failure shows at the first save.
    explicit EncryptedFileStorage(const QString &homeFolder);

    static EncryptedFileStorage &shared();

    /// Derives the key anew: HKDF-SHA-256 of the material with a salt of the program's identifier. Other
    /// material makes earlier files unreadable.
    void configure(const QByteArray &material);
    bool isConfigured() const { return m_encryptionKey.size() > 0; }

    bool save(const QString &chatId, const QByteArray &blob) override;
    std::optional<QByteArray> load(const QString &chatId) const override;
    void remove(const QString &chatId) override;

    /// The derivation alone, for any identifier. Pure.
    static SecretBytes deriveKey(const QByteArray &material, const QByteArray &identifier);

private:
    QString fileOf(const QString &chatId) const;

    QString m_baseDir;
    SecretBytes m_encryptionKey;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "OfflineQueue/QueueFile.h"
#include "Ratio.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

// The queue's file against JSON and cipher alone, with no record, no file and no key to be had.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int count = 10'000;

struct OneKey : SecretStore {
    QByteArray key = QByteArray(32, 'k');
    qint32 add(const QString &, const QString &, const QString &, const QByteArray &) override { return 0; }
    Match copyMatching(const QString &, const QString &) override { return {SecretStatus::success, key}; }
    qint32 remove(const QString &, const QString &) override { return 0; }
};

const uchar *bytes(const QByteArray &array) {
    return reinterpret_cast<const uchar *>(array.constData());
}

uchar *bytes(QByteArray &array) {
    return reinterpret_cast<uchar *>(array.data());
}

QByteArray bareSeal(const QByteArray &key, const QByteArray &plain) {
    QByteArray file(16 + plain.size() + 16, Qt::Uninitialized);
    RAND_bytes(bytes(file) + 4, 12);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex2(context, EVP_aes_256_gcm(), bytes(key), bytes(file) + 4, nullptr);
    int written = 0;
    EVP_EncryptUpdate(context, bytes(file) + 16, &written, bytes(plain), int(plain.size()));
    EVP_EncryptFinal_ex(context, bytes(file) + 16 + written, &written);
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_GET_TAG, 16, bytes(file) + 16 + plain.size());
    EVP_CIPHER_CTX_free(context);
    return file;
}

QByteArray bareOpen(const QByteArray &key, QByteArray file) {
    QByteArray plain(file.size() - 32, Qt::Uninitialized);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_DecryptInit_ex2(context, EVP_aes_256_gcm(), bytes(key), bytes(file) + 4, nullptr);
    int written = 0;
    EVP_DecryptUpdate(context, bytes(plain), &written, bytes(file) + 16, int(plain.size()));
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_SET_TAG, 16, bytes(file) + 16 + plain.size());
    EVP_DecryptFinal_ex(context, bytes(plain) + written, &written);
    EVP_CIPHER_CTX_free(context);
    return plain;
}

QList<QueuedMessage> manyMessages() {
    QList<QueuedMessage> messages(count);
    for (int i = 0; i < count; ++i) {
        messages[i].chatID = u"chat-%1"_s.arg(i % 50);
        messages[i].content = u"Встретимся завтра в %1, if you can."_s.arg(i).repeated(3);
        messages[i].type = u"text"_s;
        messages[i].userID = u"7"_s;
    }
    return messages;
}

} // namespace

int main() {
    const QTemporaryDir folder;
    OneKey store;
    const QueueFile file(folder.path(), store);
    const QList<QueuedMessage> messages = manyMessages();
    file.saveToDisk(messages);
    const QJsonArray array = QJsonDocument::fromJson(queueform::encode(messages)).array();
    const QByteArray sealed = bareSeal(store.key, QJsonDocument(array).toJson(QJsonDocument::Compact));

    benchmarks::ratio(
        "save, 10,000 messages", 41,
        [&] {
            file.saveToDisk(messages);
            return 0;
        },
        [&] { return bareSeal(store.key, QJsonDocument(array).toJson(QJsonDocument::Compact)).size(); });
    benchmarks::ratio(
        "load, 10,000 messages", 41, [&] { return file.loadFromDisk().size(); },
        [&] { return QJsonDocument::fromJson(bareOpen(store.key, sealed)).array().size(); });
    benchmarks::ratio(
        "save and load, 10,000 messages", 41,
        [&] {
            file.saveToDisk(messages);
            return file.loadFromDisk().size();
        },
        [&] {
            const QByteArray bytes = bareSeal(store.key, QJsonDocument(array).toJson(QJsonDocument::Compact));
            return QJsonDocument::fromJson(bareOpen(store.key, bytes)).array().size();
        });
    return 0;
}

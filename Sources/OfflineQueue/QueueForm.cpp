// SPDX-License-Identifier: MIT
#include "OfflineQueue/QueueForm.h"

#include "Model/DerivedJson.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace orvane {

OfflineQueueStorageError OfflineQueueStorageError::keychain(qint32 status) {
    return OfflineQueueStorageError(u"The key of the queue can't be had (status %1)."_s.arg(status));
}

OfflineQueueStorageError OfflineQueueStorageError::invalidCiphertext() {
    return OfflineQueueStorageError(u"The file is no queue."_s);
}

} // namespace orvane

namespace orvane::queueform {

namespace {

// Straight to bytes: the toolkit's objects on the way would cost more than all the rest of a save.
struct Writer {
    QByteArray &json;

    void operator()(const char *key, const QString &value) {
        begin(key);
        append(value);
    }
    void operator()(const char *key, const QDateTime &value) {
        begin(key);
        json += QByteArray::number(times::toReferenceSeconds(value), 'g', QLocale::FloatingPointShortest);
    }
    void operator()(const char *key, qint64 value) {
        begin(key);
        json += QByteArray::number(value);
    }

private:
    void begin(const char *key) {
        json += json.endsWith('{') ? "\"" : ",\"";
        json += key;
        json += "\":";
    }

    void append(const QString &text) {
        const QByteArray bytes = text.toUtf8();
        json += '"';
        qsizetype written = 0;
        for (qsizetype i = 0; i < bytes.size(); ++i) {
            const char byte = bytes[i];
            const bool control = uchar(byte) < 0x20;
            if (!control && byte != '"' && byte != '\\')
                continue;
            json += QByteArrayView(bytes).sliced(written, i - written);
            json += control ? "\\u00" + QByteArray(1, byte).toHex() : QByteArray("\\") + byte;
            written = i + 1;
        }
        json += QByteArrayView(bytes).sliced(written);
        json += '"';
    }
};

} // namespace

QByteArray encode(const QList<QueuedMessage> &messages) {
    QByteArray json = "[";
    for (const QueuedMessage &message : messages) {
        json += json.size() == 1 ? "{" : ",{";
        QueuedMessage::visitFields(message, Writer{json});
        json += '}';
    }
    json += ']';
    return json;
}

QList<QueuedMessage> decode(const QByteArray &json) {
    auto messages = derived::Codec<QList<QueuedMessage>>::read(json::parse(json));
    if (!messages)
        throw JsonError(u"The data is no list of queued messages."_s);
    return std::move(*messages);
}

QByteArray seal(const QByteArray &json, const SecretBytes &key) {
    const QByteArray nonce = primitives::randomBytes(primitives::nonceSize);
    const primitives::Box box = primitives::seal(key.view(), nonce, json);
    return fileMagic.toByteArray() + box.nonce + box.ciphertext + box.tag;
}

primitives::Box boxOf(const QByteArray &file) {
    if (!file.startsWith(fileMagic) || file.size() == fileMagic.size())
        throw OfflineQueueStorageError::invalidCiphertext();
    const QByteArrayView combined = QByteArrayView(file).sliced(fileMagic.size());
    if (combined.size() < primitives::nonceSize + primitives::tagSize)
        throw CipherError(u"The box is too short."_s);
    return {combined.first(primitives::nonceSize).toByteArray(),
            combined.sliced(primitives::nonceSize).chopped(primitives::tagSize).toByteArray(),
            combined.last(primitives::tagSize).toByteArray()};
}

} // namespace orvane::queueform

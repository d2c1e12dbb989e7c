// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaEnum>
#include <QObject>
#include <QString>

#include <optional>

/// The closed sets of the value records. Each enumerator's name is its raw text on the wire and in stored
/// forms.
namespace orvane {
Q_NAMESPACE

enum class MessageType {
    text,
    image,
    voice,
    video,
    file,
    sticker,
    location,
    system,
    aiRequest,
    aiResponse,
    poll
};
Q_ENUM_NS(MessageType)

enum class DeliveryStatus { sending, sent, delivered, read, failed };
Q_ENUM_NS(DeliveryStatus)

enum class AttachmentType { image, audio, video, file, sticker };
Q_ENUM_NS(AttachmentType)

enum class ChatType { direct, group, channel };
Q_ENUM_NS(ChatType)

enum class UserStatus { online, offline, away, typing };
Q_ENUM_NS(UserStatus)

template <typename E>
QString rawText(E value) {
    return QString::fromLatin1(QMetaEnum::fromType<E>().valueToKey(int(value)));
}

/// Exact and case-sensitive; absent for a text that is no raw value.
template <typename E>
std::optional<E> fromRawText(const QString &text) {
    bool known = false;
    const QByteArray key = text.toUtf8();
    // The lookup would also take a qualified name, and it ends at a null character.
    if (key.contains(':') || key.contains('\0'))
        return std::nullopt;
    const int value = QMetaEnum::fromType<E>().keyToValue(key.constData(), &known);
    return known ? std::optional(E(value)) : std::nullopt;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Record.h"

#include <QString>

namespace orvane {

#define STICKER(FIELD, OPTIONAL, ENUM)                                                                       \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, emoji)                                                                                    \
    FIELD(QList<QString>, keywords)

/// One sticker: an emoji and the words by which it is found.
class Sticker {
    Q_GADGET
    QML_VALUE_TYPE(sticker)
    RECORD(Sticker, STICKER)
};

#define STICKER_PACK(FIELD, OPTIONAL, ENUM)                                                                  \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, name)                                                                                     \
    FIELD(QString, emoji)                                                                                    \
    FIELD(QList<orvane::Sticker>, stickers)

/// Stickers of one kind; `emoji` stands for the pack.
class StickerPack {
    Q_GADGET
    QML_VALUE_TYPE(stickerPack)
    RECORD(StickerPack, STICKER_PACK)
public:
    using Sticker = orvane::Sticker;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "RichContent/StickerPack.h"

namespace orvane {

/// The packs that the program has, made anew at every call. Any thread.
QList<StickerPack> stickerCatalogue();

} // namespace orvane

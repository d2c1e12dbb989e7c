// SPDX-License-Identifier: MIT
#pragma once

#include "RichContent/StickerPack.h"

#include <QCoroTask>

#include <QThreadPool>

namespace orvane {

/// The sticker catalogue of the process, on an executor of its own. Any thread; destroyed once its reads have
/// ended.
class MessengerStickers {
public:
    MessengerStickers();

    static MessengerStickers &shared();

    /// Always the same. The caller goes on in its own thread, from its event loop.
    QCoro::Task<QList<StickerPack>> packs();

private:
    const QList<StickerPack> m_packs;
    QThreadPool m_executor;
};

} // namespace orvane

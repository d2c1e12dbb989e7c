// SPDX-License-Identifier: MIT
#include "RichContent/MessengerStickers.h"

#include "RichContent/StickerCatalogue.h"

#include <QCoroFuture>
#include <QtConcurrentRun>

namespace orvane {

MessengerStickers::MessengerStickers()
    : m_packs(stickerCatalogue()) {
    m_executor.setMaxThreadCount(1);
}

MessengerStickers &MessengerStickers::shared() {
    static auto *stickers = new MessengerStickers;
    return *stickers;
}

QCoro::Task<QList<StickerPack>> MessengerStickers::packs() {
    QFuture<QList<StickerPack>> read = QtConcurrent::run(&m_executor, [this] { return m_packs; });
    co_return co_await read;
}

} // namespace orvane

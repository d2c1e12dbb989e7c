// SPDX-License-Identifier: MIT
#include "RichContent/StickerPickerView.h"

#include "Base/Task.h"

#include <algorithm>

namespace orvane {

StickerPickerView::StickerPickerView(QObject *parent, MessengerStickers &catalogue)
    : QObject(parent)
    , m_catalogue(catalogue)
    , m_onSelection(selectedPack.addNotifier([this] { fillGrid(); }))
    , m_onSearch(searchText.addNotifier([this] { fillGrid(); })) {}

void StickerPickerView::appear() {
    launch(load(this));
}

QCoro::Task<void> StickerPickerView::load(QPointer<StickerPickerView> self) {
    const QList<StickerPack> read = co_await self->m_catalogue.packs();
    if (!self)
        co_return;
    self->packs.assign(read);
    self->fillGrid();
}

QList<StickerPack> StickerPickerView::displayPacks() const {
    const QString query = searchText.value().toLower();
    if (query.isEmpty())
        return packs.records();
    const auto isFound = [&query](const Sticker &sticker) {
        return std::any_of(sticker.keywords.cbegin(), sticker.keywords.cend(),
                           [&query](const QString &keyword) { return keyword.toLower().contains(query); });
    };
    QList<StickerPack> found;
    for (StickerPack pack : packs.records()) {
        pack.stickers.removeIf([&isFound](const Sticker &sticker) { return !isFound(sticker); });
        if (!pack.stickers.isEmpty())
            found.append(pack);
    }
    return found;
}

void StickerPickerView::selectPack(const QString &id) {
    selectedPack = id;
    searchText = QString();
}

void StickerPickerView::fillGrid() {
    QList<Sticker> shown;
    for (const StickerPack &pack : displayPacks())
        if (!searchText.value().isEmpty() || pack.id == selectedPack.value())
            shown += pack.stickers;
    stickers.assign(shown);
}

} // namespace orvane

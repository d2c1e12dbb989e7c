// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "RichContent/MessengerStickers.h"

#include <QCoroTask>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace orvane {

using namespace Qt::StringLiterals;

/// The panel that offers stickers: the pack that is selected, or while something is searched for what is
/// found in all packs. Main thread.
class StickerPickerView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    OBSERVABLE(QString, selectedPack, u"smileys"_s)
    OBSERVABLE(QString, searchText)
    Q_PROPERTY(orvane::RecordListModel *packs READ packModel CONSTANT)
    /// What the grid shows, pack after pack.
    Q_PROPERTY(orvane::RecordListModel *stickers READ stickerModel CONSTANT)

public:
    /// `catalogue` outlives the panel.
    explicit StickerPickerView(QObject *parent = nullptr,
                               MessengerStickers &catalogue = MessengerStickers::shared());

    /// Empty until the catalogue has been read.
    RecordList<StickerPack> packs;
    RecordList<Sticker> stickers;
    RecordListModel *packModel() { return &packs; }
    RecordListModel *stickerModel() { return &stickers; }

    /// Reads the catalogue.
    Q_INVOKABLE void appear();

    /// All packs, or those stickers of which a keyword contains `searchText` in any case. Packs without one
    /// are left out.
    QList<StickerPack> displayPacks() const;

    /// Ends a search as well.
    Q_INVOKABLE void selectPack(const QString &id);

private:
    static QCoro::Task<void> load(QPointer<StickerPickerView> self);
    void fillGrid();

    MessengerStickers &m_catalogue;
    QPropertyNotifier m_onSelection;
    QPropertyNotifier m_onSearch;
};

} // namespace orvane

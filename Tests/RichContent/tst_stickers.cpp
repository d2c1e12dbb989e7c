// SPDX-License-Identifier: MIT
#include "RichContent/StickerCatalogue.h"
#include "RichContent/StickerPickerView.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QSet>

using namespace orvane;

namespace {

struct Panel {
    MessengerStickers catalogue;
    StickerPickerView picker{nullptr, catalogue};
    QAbstractItemModelTester tester{&picker.stickers, QAbstractItemModelTester::FailureReportingMode::QtTest};

    void load() {
        picker.appear();
        QTRY_COMPARE(picker.packs.count(), 10);
    }
    QString grid() const {
        QStringList ids;
        for (const Sticker &sticker : picker.stickers.records())
            ids.append(sticker.id);
        return ids.join(' ');
    }
};

} // namespace

class TestStickers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theCatalogueIsWhole();
    void keywordsFindStickers_data();
    void keywordsFindStickers();
    void aTabEndsTheSearch();
    void aPanelMayGoBeforeTheCatalogueComes();
};

void TestStickers::theCatalogueIsWhole() {
    const QList<StickerPack> packs = stickerCatalogue();
    QSet<QString> ids;
    QSet<QString> names;
    int withSelector = 0;
    for (const StickerPack &pack : packs) {
        QCOMPARE(pack.stickers.size(), 8);
        names << pack.id << pack.name << pack.emoji;
        for (const Sticker &sticker : pack.stickers) {
            ids.insert(sticker.id);
            withSelector += sticker.emoji.endsWith(QChar(0xfe0f));
            QCOMPARE(sticker.keywords.size(), 2);
            QVERIFY(sticker.keywords.at(0).at(0).unicode() > 0x400);
            QVERIFY(sticker.keywords.at(1).at(0).unicode() < 0x80);
        }
    }
    QCOMPARE(ids.size(), 80);
    QCOMPARE(names.size(), 30);
    // Without it, these would be drawn as text.
    QCOMPARE(withSelector, 7);
    QCOMPARE(packs.at(2).stickers.at(3).emoji, packs.at(2).stickers.at(7).emoji);
}

void TestStickers::keywordsFindStickers_data() {
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("found");
    QTest::addColumn<int>("packs");
    QTest::newRow("nothing") << ""
                             << "s1 s2 s3 s4 s5 s6 s7 s8" << 10;
    QTest::newRow("upper case") << "LOVE"
                                << "s2 h1 n5" << 3;
    QTest::newRow("Russian upper case") << "УДАЧА"
                                        << "g7 n5" << 2;
    QTest::newRow("part of a word") << "мех"
                                    << "s1 c4" << 2;
    QTest::newRow("over many packs") << "AR"
                                     << "s7 c5 n7 p1" << 4;
    QTest::newRow("unknown") << "xyz"
                             << "" << 0;
    QTest::newRow("an emoji") << "😂"
                              << "" << 0;
    QTest::newRow("a pack") << "Коты"
                            << "" << 0;
    QTest::newRow("blanks count") << " lol"
                                  << "" << 0;
}

void TestStickers::keywordsFindStickers() {
    QFETCH(QString, search);
    QFETCH(QString, found);
    QFETCH(int, packs);
    Panel panel;
    panel.load();
    panel.picker.searchText = search;
    QCOMPARE(panel.grid(), found);
    QCOMPARE(panel.picker.displayPacks().size(), packs);
}

void TestStickers::aTabEndsTheSearch() {
    Panel panel;
    QCOMPARE(panel.grid(), "");
    panel.load();
    panel.picker.searchText = "love";
    panel.picker.selectPack("cats");
    QCOMPARE(panel.picker.searchText.value(), "");
    QCOMPARE(panel.grid(), "c1 c2 c3 c4 c5 c6 c7 c8");
    panel.picker.selectPack("nowhere");
    QCOMPARE(panel.grid(), "");
}

void TestStickers::aPanelMayGoBeforeTheCatalogueComes() {
    MessengerStickers catalogue;
    StickerPickerView(nullptr, catalogue).appear();
    Panel later;
    later.load();
}

ORVANE_TEST_MAIN(TestStickers)
#include "tst_stickers.moc"

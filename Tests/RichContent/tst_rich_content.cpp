// SPDX-License-Identifier: MIT
#include "Model/DerivedJson.h"
#include "RichContent/PollCardView.h"
#include "RichContent/PollCreatorView.h"
#include "RichContent/StickerCatalogue.h"
#include "RichContent/StickerPickerView.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>

using namespace orvane;

namespace {

const QStringList people{"7", "8", "9"};
const QStringList optionIDs{"a", "b", "c", "d"};

MessengerPoll emptyPoll(bool multiple) {
    MessengerPoll poll;
    poll.id = "poll";
    poll.isMultipleChoice = multiple;
    for (const QString &id : optionIDs) {
        PollOption option;
        option.id = id;
        poll.options.append(option);
    }
    return poll;
}

// Who stands where, as plain pairs of a person and an option.
struct Reference {
    bool multiple;
    QSet<std::pair<QString, QString>> votes;

    void tap(const QString &person, const QString &option) {
        if (!optionIDs.contains(option) || votes.remove({person, option}))
            return;
        if (!multiple)
            votes.removeIf([&](const auto &vote) { return vote.first == person; });
        votes.insert({person, option});
    }
    bool hasVoted(const QString &person) const {
        return std::any_of(votes.begin(), votes.end(),
                           [&](const auto &vote) { return vote.first == person; });
    }
};

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

class TestRichContent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Three people in random order, one of them at this card, some taps on an option that isn't there.
    void votesFollowTheRule() {
        QRandomGenerator random(20'261'124);
        for (int round = 0; round < 100; ++round) {
            const bool multiple = round % 2;
            IN_ROW(multiple ? "several choices" : "one choice");
            PollCardView card;
            new QAbstractItemModelTester(card.optionModel(),
                                         QAbstractItemModelTester::FailureReportingMode::QtTest, &card);
            card.setPoll(emptyPoll(multiple));
            QSignalSpy removed(card.optionModel(), &QAbstractItemModel::rowsRemoved);
            connect(&card, &PollCardView::vote, &card, &PollCardView::setPoll);
            Reference reference{multiple, {}};
            for (int step = 0; step < 40; ++step) {
                const QString person = people.at(random.bounded(3));
                const QString option = random.bounded(10) == 0 ? "x" : optionIDs.at(random.bounded(4));
                card.setCurrentUserID(person);
                card.tap(option);
                reference.tap(person, option);
                QCOMPARE(card.total(), reference.votes.size());
                for (const PollOption &shown : card.poll().options) {
                    QCOMPARE(card.isSelected(shown), reference.votes.contains({person, shown.id}));
                    for (const QString &voter : people)
                        QCOMPARE(shown.voters.contains(voter), reference.votes.contains({voter, shown.id}));
                }
                for (const QString &reader : people) {
                    card.setCurrentUserID(reader);
                    QCOMPARE(card.hasVoted(), reference.hasVoted(reader));
                }
            }
            // A vote never takes the row, and with it the focus, away.
            QCOMPARE(removed.size(), 0);
        }
    }

    void pollsAreTrimmedAndRefused() {
        // No options where the poll is refused.
        const auto check = [](const char *name, const QString &question, const QStringList &typed,
                              const QStringList &options) {
            IN_ROW(name);
            PollCreatorView creator;
            creator.chatID = "c";
            creator.currentUserID = "7";
            creator.isMultipleChoice = true;
            QSignalSpy created(&creator, &PollCreatorView::created);
            creator.question = question;
            creator.options = typed;
            QCOMPARE(creator.canCreate(), !options.isEmpty());
            creator.createPoll();
            QCOMPARE(created.size(), options.isEmpty() ? 0 : 1);
            QCOMPARE(creator.isPresented.value(), options.isEmpty());
            if (options.isEmpty())
                return;
            const auto poll = created.first().first().value<MessengerPoll>();
            QCOMPARE(poll.question, question.trimmed());
            QCOMPARE(poll.chatID + poll.creatorID, "c7");
            QVERIFY(poll.isMultipleChoice && !poll.isAnonymous);
            QSet<QString> ids{poll.id};
            QStringList texts;
            for (const PollOption &option : poll.options) {
                ids.insert(option.id);
                texts.append(option.text);
                QVERIFY(option.voters.isEmpty());
            }
            QCOMPARE(texts, options);
            QCOMPARE(ids.size(), options.size() + 1);
            // What is sent is what comes back.
            const auto read = derived::fromJson<MessengerPoll>(derived::toJson(poll));
            QVERIFY(read && read->options == poll.options);
        };
        check("trimmed", " Tea?\n", {" yes\t", "\u2003no "}, {"yes", "no"});
        check("blanks left out", "Q", {"A", " ", "", "B"}, {"A", "B"});
        check("the same twice", "Q", {"A", "A"}, {"A", "A"});
        check("one left", "Q", {"A", " ", ""}, {});
        check("blank question", " \n\t", {"A", "B"}, {});
        check("untouched", "", {"", ""}, {});
    }

    void thereAreTwoToTenOptions() {
        PollCreatorView creator;
        const auto count = [&creator] { return creator.options.value().size(); };
        creator.removeOption(0);
        QCOMPARE(count(), 2);
        creator.setOption(1, "last");
        for (int i = 0; i < 20; ++i)
            creator.addOption();
        QCOMPARE(count(), 10);
        for (const int nowhere : {-1, 10}) {
            creator.removeOption(nowhere);
            creator.setOption(nowhere, "x");
        }
        QCOMPARE(count(), 10);
        QVERIFY(!creator.options.value().contains("x"));
        for (int i = 0; i < 20; ++i)
            creator.removeOption(0);
        QCOMPARE(creator.options.value(), (QStringList{"", ""}));
    }

    void theCatalogueIsWhole() {
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

    void keywordsFindStickers() {
        const auto check = [](const char *search, const QString &found, int packs) {
            IN_ROW(search);
            Panel panel;
            panel.load();
            panel.picker.searchText = search;
            QCOMPARE(panel.grid(), found);
            QCOMPARE(panel.picker.displayPacks().size(), packs);
        };
        check("", "s1 s2 s3 s4 s5 s6 s7 s8", 10);
        check("LOVE", "s2 h1 n5", 3);
        check("УДАЧА", "g7 n5", 2);
        check("мех", "s1 c4", 2);
        check("AR", "s7 c5 n7 p1", 4);
        // Unknown, an emoji, a pack, and blanks, which count.
        for (const char *nothing : {"xyz", "😂", "Коты", " lol"})
            check(nothing, "", 0);
    }

    void aTabEndsTheSearch() {
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

    void aPanelMayGoBeforeTheCatalogueComes() {
        MessengerStickers catalogue;
        StickerPickerView(nullptr, catalogue).appear();
        Panel later;
        later.load();
    }
};

ORVANE_TEST_MAIN(TestRichContent)
#include "tst_rich_content.moc"

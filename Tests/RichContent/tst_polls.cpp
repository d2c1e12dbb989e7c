// SPDX-License-Identifier: MIT
#include "Model/DerivedJson.h"
#include "RichContent/PollCardView.h"
#include "RichContent/PollCreatorView.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
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

} // namespace

class TestPolls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void votesFollowTheRule_data();
    void votesFollowTheRule();
    void pollsAreTrimmedAndRefused_data();
    void pollsAreTrimmedAndRefused();
    void thereAreTwoToTenOptions();
};

void TestPolls::votesFollowTheRule_data() {
    QTest::addColumn<bool>("multiple");
    QTest::newRow("one choice") << false;
    QTest::newRow("several choices") << true;
}

// Three people in random order, one of them at this card, some taps on an option that isn't there.
void TestPolls::votesFollowTheRule() {
    QFETCH(bool, multiple);
    QRandomGenerator random(20'261'124);
    for (int round = 0; round < 50; ++round) {
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

void TestPolls::pollsAreTrimmedAndRefused_data() {
    QTest::addColumn<QString>("question");
    QTest::addColumn<QStringList>("typed");
    // Empty where the poll is refused.
    QTest::addColumn<QStringList>("options");
    QTest::newRow("trimmed") << " Tea?\n" << QStringList{" yes\t", "\u2003no "} << QStringList{"yes", "no"};
    QTest::newRow("blanks left out") << "Q" << QStringList{"A", " ", "", "B"} << QStringList{"A", "B"};
    QTest::newRow("the same twice") << "Q" << QStringList{"A", "A"} << QStringList{"A", "A"};
    QTest::newRow("one left") << "Q" << QStringList{"A", " ", ""} << QStringList();
    QTest::newRow("blank question") << " \n\t" << QStringList{"A", "B"} << QStringList();
    QTest::newRow("untouched") << "" << QStringList{"", ""} << QStringList();
}

void TestPolls::pollsAreTrimmedAndRefused() {
    QFETCH(QString, question);
    QFETCH(QStringList, typed);
    QFETCH(QStringList, options);
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
}

void TestPolls::thereAreTwoToTenOptions() {
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

ORVANE_TEST_MAIN(TestPolls)
#include "tst_polls.moc"

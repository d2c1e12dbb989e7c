// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessagePlacement.h"
#include "Support/TestMain.h"

using namespace Qt::StringLiterals;

using namespace orvane;

class TestMessagePlacement : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void neighboursDecide_data();
    void neighboursDecide();
    void rowsOutsideStandAlone();
};

/// Messages as "sender@minute", the expected placements as letters: d starts a day, s starts a run, e ends
/// one.
void TestMessagePlacement::neighboursDecide_data() {
    QTest::addColumn<QString>("messages");
    QTest::addColumn<QString>("placements");
    QTest::newRow("one") << "a@0"
                         << "dse";
    QTest::newRow("a run") << "a@0 a@1 a@2"
                           << "ds - e";
    QTest::newRow("two senders") << "a@0 b@0 a@0"
                                 << "dse se se";
    QTest::newRow("five minutes still belong") << "a@0 a@5"
                                               << "ds e";
    QTest::newRow("six minutes don't") << "a@0 a@6"
                                       << "dse se";
    QTest::newRow("midnight splits a run") << "a@1439 a@1440"
                                           << "dse dse";
    QTest::newRow("a clock that ran back") << "a@15 a@13 a@3"
                                           << "ds e se";
}

void TestMessagePlacement::neighboursDecide() {
    QFETCH(QString, messages);
    QFETCH(QString, placements);
    const QDateTime midnight = QDate(2026, 3, 4).startOfDay();
    QList<MessengerMessage> records;
    for (const QString &entry : messages.split(u' ')) {
        MessengerMessage message;
        message.senderID = entry.section(u'@', 0, 0);
        message.timestamp = midnight.addSecs(60 * entry.section(u'@', 1).toInt());
        records.append(message);
    }
    QStringList found;
    for (int row = 0; row < records.size(); ++row) {
        const MessagePlacement placement = MessagePlacement::of(records, row);
        QString letters;
        if (placement.startsDay)
            letters += u'd';
        if (placement.startsRun)
            letters += u's';
        if (placement.endsRun)
            letters += u'e';
        found.append(letters.isEmpty() ? u"-"_s : letters);
    }
    QCOMPARE(found.join(u' '), placements);
}

void TestMessagePlacement::rowsOutsideStandAlone() {
    QCOMPARE(MessagePlacement::of({}, 0), MessagePlacement());
    QCOMPARE(MessagePlacement::of({MessengerMessage()}, -1), MessagePlacement());
    QCOMPARE(MessagePlacement::of({MessengerMessage()}, 1), MessagePlacement());
}

ORVANE_TEST_MAIN(TestMessagePlacement)
#include "tst_message_placement.moc"

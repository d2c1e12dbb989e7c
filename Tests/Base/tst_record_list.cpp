// SPDX-License-Identifier: MIT
#include "Base/RecordList.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

struct Row {
    QString id;
    int value = 0;

    bool operator==(const Row &) const = default;
};

/// "a1 b2" as rows with the ids a and b.
QList<Row> rows(const QString &text) {
    QList<Row> result;
    const QStringList parts = text.split(u' ', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        result.append({part.left(1), part.mid(1).toInt()});
    return result;
}

/// What the list told its views, in order, such as "insert 0-2".
class Told : public QObject {
public:
    explicit Told(const RecordListModel &list) {
        connect(&list, &RecordListModel::rowsInserted, this,
                [this](const QModelIndex &, int from, int to) { note("insert", from, to); });
        connect(&list, &RecordListModel::rowsRemoved, this,
                [this](const QModelIndex &, int from, int to) { note("remove", from, to); });
        connect(&list, &RecordListModel::rowsMoved, this,
                [this](const QModelIndex &, int from, int, const QModelIndex &, int to) {
                    note("move", from, to);
                });
        connect(
            &list, &RecordListModel::dataChanged, this,
            [this](const QModelIndex &from, const QModelIndex &to) { note("change", from.row(), to.row()); });
        connect(&list, &RecordListModel::modelReset, this, [this] { lines.append(u"reset"_s); });
        connect(&list, &RecordListModel::countChanged, this, [this] { lines.append(u"count"_s); });
    }

    QStringList lines;

private:
    void note(const char *what, int from, int to) {
        lines.append(u"%1 %2-%3"_s.arg(QLatin1StringView(what)).arg(from).arg(to));
    }
};

} // namespace

Q_DECLARE_METATYPE(Row)

class TestRecordList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void assignTellsOnlyWhatChanged_data();
    void assignTellsOnlyWhatChanged();
    void followsAPlainListThroughRandomOperations_data();
    void followsAPlainListThroughRandomOperations();
    void takesRecordsThatStandInTheListItself();
    void answersNothingForForeignIndexesAndRoles();
};

void TestRecordList::assignTellsOnlyWhatChanged_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QStringList>("told");
    const auto row = [](const char *name, const char *before, const char *after, const QStringList &told) {
        QTest::newRow(name) << QString::fromLatin1(before) << QString::fromLatin1(after) << told;
    };
    row("nothing", "", "", {});
    row("the same", "a1 b1", "a1 b1", {});
    row("one row differs", "a1 b1 c1", "a1 b2 c1", {u"change 1-1"_s});
    row("first fill", "", "a1 b1", {u"insert 0-1"_s, u"count"_s});
    row("emptied", "a1 b1", "", {u"remove 0-1"_s, u"count"_s});
    row("appended", "a1 b1", "a1 b1 c1", {u"insert 2-2"_s, u"count"_s});
    row("put in front", "b1 c1", "a1 b1 c1", {u"insert 0-0"_s, u"count"_s});
    row("put in between", "a1 c1", "a1 b1 c1", {u"insert 1-1"_s, u"count"_s});
    row("taken from the middle", "a1 b1 c1", "a1 c1", {u"remove 1-1"_s, u"count"_s});
    row("middle exchanged", "a1 b1 c1", "a1 x1 c1", {u"remove 1-1"_s, u"insert 1-1"_s});
    row("ends differ, middle longer", "a1 b1 z1", "a2 x1 y1 z2",
        {u"remove 1-1"_s, u"insert 1-2"_s, u"change 0-0"_s, u"change 3-3"_s, u"count"_s});
    row("one id many times", "a1 a1 a1", "a1 a1", {u"remove 2-2"_s, u"count"_s});
}

void TestRecordList::assignTellsOnlyWhatChanged() {
    QFETCH(QString, before);
    QFETCH(QString, after);
    RecordList<Row> list;
    const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
    list.assign(rows(before));
    const Told told(list);
    list.assign(rows(after));
    QCOMPARE(list.records(), rows(after));
    QTEST(told.lines, "told");
}

void TestRecordList::followsAPlainListThroughRandomOperations_data() {
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestRecordList::followsAPlainListThroughRandomOperations() {
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    RecordList<Row> list;
    const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const Told told(list);
    QList<Row> plain;
    // Few ids, so that the same one stands in several places and comes back after it went.
    const auto record = [&] { return Row{QString(QChar(u'a' + random.bounded(6))), random.bounded(3)}; };
    for (int step = 0; step < 400; ++step) {
        const int size = int(plain.size());
        const int at = size ? random.bounded(size) : 0;
        const int other = size ? random.bounded(size) : 0;
        const Row one = record();
        switch (random.bounded(size ? 6 : 2)) {
        case 0:
            list.append(one);
            plain.append(one);
            break;
        case 1: {
            QList<Row> next = plain.mid(at, random.bounded(4));
            for (int i = random.bounded(4); i > 0; --i)
                next.insert(random.bounded(int(next.size()) + 1), record());
            list.assign(next);
            plain = next;
            break;
        }
        case 2:
            list.insert(at, one);
            plain.insert(at, one);
            break;
        case 3:
            list.removeAt(at);
            plain.removeAt(at);
            break;
        case 4:
            list.replace(at, one);
            plain[at] = one;
            break;
        case 5:
            list.move(at, other);
            plain.move(at, other);
            break;
        }
        QCOMPARE(list.records(), plain);
        QCOMPARE(list.count(), int(plain.size()));
    }
    QVERIFY(!told.lines.contains(u"reset"_s));
}

void TestRecordList::takesRecordsThatStandInTheListItself() {
    RecordList<Row> list;
    list.assign(rows(u"a1 b2"_s));
    list.append(list.at(0));
    list.insert(0, list.at(1));
    list.replace(1, list.at(2));
    list.assign(list.records());
    QCOMPARE(list.records(), rows(u"b2 b2 b2 a1"_s));
    QCOMPARE(list.rowOf(u"a"_s), 3);
    QCOMPARE(list.rowOf(u"b"_s), 0);
    QCOMPARE(list.rowOf(u"c"_s), -1);
}

void TestRecordList::answersNothingForForeignIndexesAndRoles() {
    RecordList<Row> list;
    list.assign(rows(u"a1"_s));
    QCOMPARE(list.data(list.index(0), RecordListModel::RecordRole).value<Row>().value, 1);
    QVERIFY(!list.data(list.index(0), Qt::DisplayRole).isValid());
    QCOMPARE(list.rowCount(list.index(0)), 0);
    QCOMPARE(list.roleNames(), (QHash<int, QByteArray>{{RecordListModel::RecordRole, "record"}}));
}

QTEST_GUILESS_MAIN(TestRecordList)

#include "tst_record_list.moc"

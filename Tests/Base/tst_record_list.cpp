// SPDX-License-Identifier: MIT
#include "Base/RecordList.h"
#include "Support/InRow.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>

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
struct Told : QObject {
    explicit Told(const RecordListModel &list) {
        const auto note = [this](const char *what) {
            return [this, what](const QModelIndex &, int from, int to) {
                lines.append(u"%1 %2-%3"_s.arg(what).arg(from).arg(to));
            };
        };
        connect(&list, &RecordListModel::rowsInserted, this, note("insert"));
        connect(&list, &RecordListModel::rowsRemoved, this, note("remove"));
        connect(&list, &RecordListModel::rowsMoved, this, note("move"));
        connect(&list, &RecordListModel::dataChanged, this,
                [changed = note("change")](const QModelIndex &from, const QModelIndex &to) {
                    changed({}, from.row(), to.row());
                });
        connect(&list, &RecordListModel::modelReset, this, [this] { lines.append("reset"); });
        connect(&list, &RecordListModel::countChanged, this, [this] { lines.append("count"); });
    }

    QStringList lines;
};

} // namespace

class TestRecordList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void assignTellsOnlyWhatChanged() {
        const auto check = [](const char *name, const char *before, const char *after,
                              const QStringList &expected) {
            IN_ROW(name);
            RecordList<Row> list;
            const QAbstractItemModelTester tester(&list,
                                                  QAbstractItemModelTester::FailureReportingMode::QtTest);
            list.assign(rows(before));
            const Told told(list);
            list.assign(rows(after));
            QCOMPARE(list.records(), rows(after));
            QCOMPARE(told.lines, expected);
        };
        check("nothing", "", "", {});
        check("the same", "a1 b1", "a1 b1", {});
        check("one row differs", "a1 b1 c1", "a1 b2 c1", {"change 1-1"});
        check("first fill", "", "a1 b1", {"insert 0-1", "count"});
        check("emptied", "a1 b1", "", {"remove 0-1", "count"});
        check("appended", "a1 b1", "a1 b1 c1", {"insert 2-2", "count"});
        check("put in front", "b1 c1", "a1 b1 c1", {"insert 0-0", "count"});
        check("put in between", "a1 c1", "a1 b1 c1", {"insert 1-1", "count"});
        check("taken from the middle", "a1 b1 c1", "a1 c1", {"remove 1-1", "count"});
        check("middle exchanged", "a1 b1 c1", "a1 x1 c1", {"remove 1-1", "insert 1-1"});
        check("ends differ, middle longer", "a1 b1 z1", "a2 x1 y1 z2",
              {"remove 1-1", "insert 1-2", "change 0-0", "change 3-3", "count"});
        check("one id many times", "a1 a1 a1", "a1 a1", {"remove 2-2", "count"});
    }

    void followsAPlainListThroughRandomOperations() {
        QRandomGenerator random(20'261'124);
        RecordList<Row> list;
        const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const Told told(list);
        QList<Row> plain;
        // Few ids, so that the same one stands in several places and comes back after it went.
        const auto record = [&] { return Row{QString(QChar(u'a' + random.bounded(6))), random.bounded(3)}; };
        for (int step = 0; step < 3200; ++step) {
            const int size = int(plain.size());
            const int at = size ? random.bounded(size) : 0;
            const int other = size ? random.bounded(size) : 0;
            const Row one = record();
            const auto both = [&](const auto &change) {
                change(list);
                change(plain);
            };
            const int kind = random.bounded(size ? 6 : 2);
            if (kind == 0) {
                both([&](auto &rows) { rows.append(one); });
            } else if (kind == 1) {
                QList<Row> next = plain.mid(at, random.bounded(4));
                for (int i = random.bounded(4); i > 0; --i)
                    next.insert(random.bounded(int(next.size()) + 1), record());
                list.assign(next);
                plain = next;
            } else if (kind == 2) {
                both([&](auto &rows) { rows.insert(at, one); });
            } else if (kind == 3) {
                both([&](auto &rows) { rows.removeAt(at); });
            } else if (kind == 4) {
                both([&](auto &rows) { rows.replace(at, one); });
            } else {
                both([&](auto &rows) { rows.move(at, other); });
            }
            QCOMPARE(list.records(), plain);
            QCOMPARE(list.count(), int(plain.size()));
        }
        QVERIFY(!told.lines.contains("reset"));
    }

    void takesRecordsThatStandInTheListItself() {
        RecordList<Row> list;
        list.assign(rows("a1 b2"));
        list.append(list.at(0));
        list.insert(0, list.at(1));
        list.replace(1, list.at(2));
        list.assign(list.records());
        QCOMPARE(list.records(), rows("b2 b2 b2 a1"));
        QCOMPARE(list.rowOf("a"), 3);
        QCOMPARE(list.rowOf("b"), 0);
        QCOMPARE(list.rowOf("c"), -1);
    }

    void answersNothingForForeignIndexesAndRoles() {
        RecordList<Row> list;
        list.assign(rows("a1"));
        QCOMPARE(list.data(list.index(0), RecordListModel::RecordRole).value<Row>().value, 1);
        QVERIFY(!list.data(list.index(0), Qt::DisplayRole).isValid());
        QCOMPARE(list.rowCount(list.index(0)), 0);
        QCOMPARE(list.roleNames(), (QHash<int, QByteArray>{{RecordListModel::RecordRole, "record"}}));
    }
};

QTEST_GUILESS_MAIN(TestRecordList)
#include "tst_record_list.moc"

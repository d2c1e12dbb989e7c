// SPDX-License-Identifier: MIT
#include "ChatList/Chats/SortedChats.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <algorithm>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QDateTime start = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);

MessengerChat chatOf(const QString &id, int updated, std::optional<int> last, qint64 unread = 0) {
    MessengerChat chat;
    chat.id = id;
    chat.title = id;
    chat.updatedAt = start.addSecs(updated);
    if (last) {
        chat.lastMessage.emplace();
        chat.lastMessage->timestamp = start.addSecs(*last);
    }
    chat.unreadCount = unread;
    return chat;
}

// The rule as it reads, with nothing clever.
struct Reference {
    QList<MessengerChat> chats;
    QSet<QString> pinned;
    SortedChats::Filter filter;

    QStringList shown() const {
        QList<MessengerChat> rows;
        for (const MessengerChat &chat : chats)
            if (!filter || filter(chat))
                rows.append(chat);
        std::stable_sort(rows.begin(), rows.end(), [this](const MessengerChat &a, const MessengerChat &b) {
            if (pinned.contains(a.id) != pinned.contains(b.id))
                return pinned.contains(a.id);
            const auto date = [](const MessengerChat &chat) {
                return chat.lastMessage ? chat.lastMessage->timestamp : chat.updatedAt;
            };
            return date(a) > date(b);
        });
        QStringList ids;
        for (const MessengerChat &chat : rows)
            ids.append(chat.id);
        return ids;
    }

    qint64 unread() const {
        qint64 sum = 0;
        for (const MessengerChat &chat : chats)
            sum += chat.unreadCount;
        return sum;
    }
};

QStringList idsOf(const SortedChats &chats) {
    QStringList ids;
    for (int row = 0; row < chats.rowCount(); ++row)
        ids.append(chats.at(row).id);
    return ids;
}

} // namespace

class TestSortedChats : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void standsLikeAPlainSortAfterAnyChanges();
    void oneChangeMovesOneRow();
    void oddLists();
};

// Few distinct dates, so that equal ones are common.
void TestSortedChats::standsLikeAPlainSortAfterAnyChanges() {
    QRandomGenerator random(20'261'123);
    for (int round = 0; round < 60; ++round) {
        SortedChats chats;
        new QAbstractItemModelTester(&chats, QAbstractItemModelTester::FailureReportingMode::QtTest, &chats);
        Reference reference;
        const auto randomChat = [&random](const QString &id) {
            std::optional<int> last(random.bounded(10));
            if (*last >= 5)
                last.reset();
            return chatOf(id, random.bounded(5), last, random.bounded(3));
        };
        for (int index = random.bounded(12); index > 0; --index)
            reference.chats.append(randomChat(QString::number(index)));
        chats.assign(reference.chats);
        for (int step = 0; step < 60; ++step) {
            const QString id = QString::number(random.bounded(1, 14));
            const auto place = std::find_if(reference.chats.begin(), reference.chats.end(),
                                            [&](const MessengerChat &chat) { return chat.id == id; });
            const bool known = place != reference.chats.end();
            QCOMPARE(chats.find(id) != nullptr, known);
            switch (random.bounded(6)) {
            case 0:
            case 1: {
                const MessengerChat chat = randomChat(id);
                chats.replace(chat);
                if (known)
                    *place = chat;
                break;
            }
            case 2: {
                const MessengerChat chat = randomChat(id);
                chats.insertFirst(chat);
                if (known)
                    *place = chat;
                else
                    reference.chats.prepend(chat);
                break;
            }
            case 3:
                chats.remove(id);
                if (known)
                    reference.chats.erase(place);
                reference.pinned.remove(id);
                break;
            case 4: {
                const bool pin = random.bounded(2);
                chats.setPinned(id, pin);
                if (known && pin)
                    reference.pinned.insert(id);
                else
                    reference.pinned.remove(id);
                break;
            }
            default:
                reference.filter = random.bounded(2) ? SortedChats::Filter([](const MessengerChat &chat) {
                    return chat.unreadCount > 0 || chat.id.contains(u'1');
                })
                                                     : SortedChats::Filter();
                chats.setFilter(reference.filter);
            }
            QCOMPARE(idsOf(chats), reference.shown());
            QCOMPARE(chats.unreadSum(), reference.unread());
            QCOMPARE(chats.rowOf(id), int(reference.shown().indexOf(id)));
            QCOMPARE(chats.isPinned(id), reference.pinned.contains(id));
        }
        // Pins outlive a new list.
        chats.assign(reference.chats);
        QCOMPARE(idsOf(chats), reference.shown());
    }
}

void TestSortedChats::oneChangeMovesOneRow() {
    SortedChats chats;
    QList<MessengerChat> many;
    for (int index = 0; index < 100; ++index)
        many.append(chatOf(QString::number(index), 1000 - index, std::nullopt));
    chats.assign(many);
    QSignalSpy moved(&chats, &QAbstractItemModel::rowsMoved);
    QSignalSpy changed(&chats, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&chats, &QAbstractItemModel::modelReset);
    chats.replace(chatOf(u"70"_s, 0, 2000));
    QCOMPARE(moved.size(), 1);
    QCOMPARE(moved.first().at(1).toInt(), 70);
    QCOMPARE(moved.first().at(4).toInt(), 0);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().at(0).toModelIndex().row(), 0);
    // The same again is nothing new.
    chats.replace(chatOf(u"70"_s, 0, 2000));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(reset.size(), 0);
}

void TestSortedChats::oddLists() {
    SortedChats chats;
    chats.assign({chatOf(u"a"_s, 1, {}, 5), chatOf(u"a"_s, 2, {}, 7), chatOf(QString(), 3, {}, 1)});
    QCOMPARE(idsOf(chats), (QStringList{QString(), "a"}));
    QCOMPARE(chats.unreadSum(), 6);
    QCOMPARE(chats.findFirst([](const MessengerChat &) { return true; })->id, u"a"_s);
    QVERIFY(!chats.findFirst([](const MessengerChat &) { return false; }));
    chats.replace(chatOf(u"unknown"_s, 1, {}));
    chats.remove(u"unknown"_s);
    chats.setPinned(u"unknown"_s, true);
    QCOMPARE(chats.rowCount(), 2);
}

ORVANE_TEST_MAIN(TestSortedChats)
#include "tst_sorted_chats.moc"

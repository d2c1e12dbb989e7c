// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessageRows.h"
#include "Conversation/OpenChat.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

MessengerMessage message(const QString &id, const QString &sender, const QString &text = u"hi"_s,
                         int minute = 0) {
    MessengerMessage message;
    message.id = id;
    message.senderID = sender;
    message.content = text;
    message.timestamp = QDateTime(QDate(2026, 3, 4), QTime(12, 0)).addSecs(60LL * minute);
    return message;
}

/// What a view shows that takes a role again only where it is told to.
class Follower : public QObject {
public:
    Follower(const MessageRows &rows, MessageRows::Role role)
        : m_rows(rows)
        , m_role(role) {
        for (int row = 0; row < rows.count(); ++row)
            m_seen.append(value(row));
        connect(&rows, &QAbstractItemModel::rowsInserted, this,
                [this](const QModelIndex &, int first, int last) {
                    for (int row = first; row <= last; ++row)
                        m_seen.insert(row, value(row));
                });
        connect(&rows, &QAbstractItemModel::rowsRemoved, this,
                [this](const QModelIndex &, int first, int last) { m_seen.remove(first, last - first + 1); });
        connect(&rows, &QAbstractItemModel::dataChanged, this,
                [this](const QModelIndex &first, const QModelIndex &last, const QList<int> &roles) {
                    for (int row = first.row(); row <= last.row(); ++row)
                        if (roles.isEmpty() || roles.contains(m_role))
                            m_seen[row] = value(row);
                });
    }
    bool isCurrent() const {
        QVariantList now;
        for (int row = 0; row < m_rows.count(); ++row)
            now.append(value(row));
        return now == m_seen;
    }

private:
    QVariant value(int row) const { return m_rows.data(m_rows.index(row), m_role); }

    const MessageRows &m_rows;
    MessageRows::Role m_role;
    QVariantList m_seen;
};

QVariant shown(const OpenChat &chat, MessageRows::Role role, int row = 0) {
    return chat.screen->rows()->index(row).data(role);
}

} // namespace

class TestMessageRows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rowsTellOfAllThatChangesThem();
    void aLongTextIsCutBetweenCharacters_data();
    void aLongTextIsCutBetweenCharacters();
    void manyReactionsTakeLittleRoom();
    void aRowIsSpokenWithItsState();
};

/// Neighbours, quotes, pins and translations: whatever is told of less than it changes is seen here.
void TestMessageRows::rowsTellOfAllThatChangesThem() {
    OpenChat chat({}, u"7"_s, ChatType::group);
    MessengerChatView &screen = *chat.screen;
    MessageRows &rows = *screen.rows();
    const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
    std::vector<std::unique_ptr<Follower>> followers;
    for (const int role : rows.roleNames().keys())
        followers.push_back(std::make_unique<Follower>(rows, MessageRows::Role(role)));
    QRandomGenerator random(1);
    for (int step = 0; step < 400; ++step) {
        const int count = screen.messages.count();
        const int place = count > 0 ? random.bounded(count) : 0;
        const QString id = count > 0 ? screen.messages.at(place).id : QString();
        switch (count < 3 ? 0 : random.bounded(7)) {
        case 0:
        case 1: {
            MessengerMessage next = message(QString::number(step), QString::number(7 + random.bounded(2)),
                                            u"text %1"_s.arg(step), step * random.bounded(4));
            if (random.bounded(2) == 0)
                next.replyToID = id;
            screen.messages.append(next);
            break;
        }
        case 2:
            screen.removeAll(id);
            break;
        case 3:
            screen.change(id, [&](MessengerMessage &record) { record.content += u" edited"_s; });
            break;
        case 4:
            screen.pinnedMessageIDs = QSet{id};
            break;
        case 5:
            screen.translatedText = QVariantMap{{id, QString::number(step)}};
            break;
        default: {
            QList<MessengerMessage> next = screen.messages.records();
            next.remove(place, std::min<qsizetype>(2, next.size() - place));
            next.append(message(QString::number(step), u"9"_s, {}, step));
            screen.messages.assign(next);
        }
        }
        for (const auto &follower : followers)
            QVERIFY2(follower->isCurrent(), qPrintable(QString::number(step)));
    }
}

void TestMessageRows::aLongTextIsCutBetweenCharacters_data() {
    QTest::addColumn<QString>("character");
    QTest::newRow("a surrogate pair") << u"😀"_s;
    QTest::newRow("a family") << u"👩‍👩‍👧"_s;
    QTest::newRow("a letter with marks") << u"e\u0301\u0323"_s;
    QTest::newRow("a flag") << u"🇩🇪"_s;
}

void TestMessageRows::aLongTextIsCutBetweenCharacters() {
    QFETCH(QString, character);
    for (qsizetype shift = 0; shift < character.size(); ++shift) {
        OpenChat chat;
        const QString text = QString(shift, u'x') + character.repeated(5000);
        chat.screen->messages.append(message(u"m"_s, u"9"_s, text));
        QVERIFY(shown(chat, MessageRows::CutRole).toBool());
        const QString piece = shown(chat, MessageRows::TextRole).toString();
        QVERIFY(piece.endsWith(character));
        QVERIFY(piece.size() > MessageRows::pieceLength - 100);
        while (shown(chat, MessageRows::CutRole).toBool())
            chat.screen->rows()->showMore(0);
        QCOMPARE(shown(chat, MessageRows::TextRole).toString(), text);
    }
}

void TestMessageRows::manyReactionsTakeLittleRoom() {
    OpenChat chat;
    MessengerMessage record = message(u"m"_s, u"9"_s);
    for (int number = 0; number < 10'000; ++number)
        record.reactions.append(MessageReaction{QString(100'000, u'x'), {u"9"_s, u"7"_s}});
    chat.screen->messages.append(record);
    const QStringList labels = shown(chat, MessageRows::ReactionsRole).toStringList();
    QCOMPARE(labels.size(), 21);
    QCOMPARE(labels.last(), "+9980");
    QVERIFY(labels.first().size() < 50);
    QVERIFY(labels.first().endsWith(" 2"));
}

void TestMessageRows::aRowIsSpokenWithItsState() {
    OpenChat chat;
    MessengerMessage record = message(u"m"_s, u"9"_s, u"Tea?"_s);
    chat.screen->messages.append(record);
    QCOMPARE(shown(chat, MessageRows::SpokenRole), "Ben, Tea?, 12:00, received");
    chat.screen->pinnedMessageIDs = QSet{record.id};
    record.isStarred = true;
    record.editedAt = record.timestamp;
    record.senderID = u"7"_s;
    record.deliveryStatus = DeliveryStatus::read;
    chat.screen->messages.replace(0, record);
    QCOMPARE(shown(chat, MessageRows::SpokenRole), "You, Tea?, 12:00, edited, starred, pinned, read");
}

ORVANE_TEST_MAIN(TestMessageRows)
#include "tst_message_rows.moc"

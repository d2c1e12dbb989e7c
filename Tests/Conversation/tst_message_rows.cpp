// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessagePlacement.h"
#include "Conversation/OpenChat.h"
#include "Encryption/MessengerCrypto.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>

using namespace orvane;
using namespace Qt::StringLiterals;

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
    Follower(const MessageRows &rows, int role)
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
    int m_role;
    QVariantList m_seen;
};

QVariant shown(const OpenChat &chat, MessageRows::Role role, int row = 0) {
    return chat.screen->rows()->index(row).data(role);
}

} // namespace

class TestMessageRows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// Messages as "sender@minutes", the expected placements as letters: d starts a day, s starts a run, e
    /// ends one.
    void neighboursDecideThePlacement() {
        const auto row = [](const QString &messages, const QString &placements) {
            const InRow named(messages.toUtf8());
            const QDateTime midnight = QDate(2026, 3, 4).startOfDay();
            QList<MessengerMessage> records;
            for (const QString &entry : messages.split(u' ')) {
                records.append(message({}, entry.section(u'@', 0, 0)));
                records.last().timestamp =
                    midnight.addMSecs(qRound64(60'000 * entry.section(u'@', 1).toDouble()));
            }
            QStringList found;
            for (int place = 0; place < records.size(); ++place) {
                const MessagePlacement placement = MessagePlacement::of(records, place);
                found.append(QString(placement.startsDay ? "d" : "") + (placement.startsRun ? "s" : "") +
                             (placement.endsRun ? "e" : ""));
            }
            QCOMPARE(found.join(u' '), placements);
        };
        row(u"a@0"_s, u"dse"_s);
        row(u"a@0 a@1 a@2"_s, u"ds  e"_s);
        row(u"a@0 b@0 a@0"_s, u"dse se se"_s);
        // Five minutes still belong, a second more doesn't.
        row(u"a@0 a@5"_s, u"ds e"_s);
        row(u"a@0 a@5.02"_s, u"dse se"_s);
        row(u"a@1439 a@1440"_s, u"dse dse"_s);
        // A clock that ran back.
        row(u"a@15 a@13 a@3"_s, u"ds e se"_s);
        for (const int outside : {-1, 1})
            QCOMPARE(MessagePlacement::of({message(u"m"_s, u"a"_s)}, outside), MessagePlacement());
    }

    /// Neighbours, quotes, pins, translations, names: whatever is told of less than it changes is seen here.
    void rowsTellOfAllThatChangesThem() {
        OpenChat chat({}, u"7"_s, ChatType::group);
        MessengerChatView &screen = *chat.screen;
        MessageRows &rows = *screen.rows();
        const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::vector<std::unique_ptr<Follower>> followers;
        for (const int role : rows.roleNames().keys())
            followers.push_back(std::make_unique<Follower>(rows, role));
        QRandomGenerator random(1);
        for (int step = 0; step < 400; ++step) {
            const int count = screen.messages.count();
            const int place = count > 0 ? random.bounded(count) : 0;
            const QString id = count > 0 ? screen.messages.at(place).id : QString();
            const QString text = QString::number(step);
            switch (count < 3 ? 0 : random.bounded(8)) {
            case 0:
            case 1: {
                MessengerMessage next =
                    message(text, QString::number(7 + random.bounded(2)), text, step * random.bounded(4));
                if (random.bounded(2) == 0)
                    next.replyToID = id;
                screen.messages.append(next);
                break;
            }
            case 2:
                screen.messages.removeAll(id);
                break;
            case 3:
                screen.messages.change(id, [&](MessengerMessage &record) { record.content += u" edited"_s; });
                break;
            case 4:
                screen.pinnedMessageIDs = QSet{id};
                break;
            case 5:
                screen.translatedText = QVariantMap{{id, text}};
                break;
            case 6:
                screen.useContacts({{u"8"_s, OpenChat::person(u"8"_s, text)}});
                break;
            default: {
                QList<MessengerMessage> next = screen.messages.records();
                next.remove(place, std::min<qsizetype>(2, next.size() - place));
                next.append(message(text, u"9"_s, {}, step));
                screen.messages.assign(next);
            }
            }
            for (const auto &follower : followers)
                QVERIFY2(follower->isCurrent(), qPrintable(text));
        }
    }

    /// Each attempt to open something spends a step of the session's chain.
    void whatIsSealedIsOpenedOnceInASession() {
        FaultySecretStore store(std::make_shared<StoredSecrets>());
        MessengerCrypto crypto(store, true);
        const EndToEnd engines{.crypto = [&]() -> MessengerCrypto & { return crypto; }};
        OpenChat chat({}, u"7"_s, ChatType::direct, &engines);
        const auto sealed = [&](const QString &text) {
            EncryptedMessage message = crypto.encrypt(u"c"_s, text);
            message.ephemeralKey.reset();
            return message.toContent();
        };
        const auto read = [&] { return shown(chat, MessageRows::TextRole).toString(); };
        const QString foreign =
            EncryptedMessage{"x", QByteArray(12, 'n'), QByteArray(16, 't'), {}, {}}.toContent();
        chat.screen->messages.append(message(u"m"_s, u"9"_s, foreign));
        QCOMPARE(read(), foreign);
        // What has just been shown is read again when a session begins, and what can't be opened stays as it
        // is.
        const QByteArray key = X25519PrivateKey::generate().publicKey().toBase64();
        chat.http.answerFor(
            "/api/messenger/keys/9",
            ScriptedAnswer::of(
                200,
                R"({"identity_key":"%1","signed_pre_key":"%1","signed_pre_key_signature":"%1"})"_ba.replace(
                    "%1", key)));
        chat.http.answerFor(OpenChat::target, ScriptedAnswer::of(200, "{}").heldBack());
        QStringList seen;
        connect(chat.screen->rows(), &QAbstractItemModel::dataChanged, this,
                [&](const QModelIndex &, const QModelIndex &, const QList<int> &roles) {
                    if (roles.contains(MessageRows::TextRole))
                        seen.append(read());
                });
        chat.screen->loadMessages();
        QTRY_COMPARE(seen, QStringList{foreign});
        QVERIFY(crypto.hasSession(u"c"_s));
        // That was the first step. What is sealed now opens at the second one and at the third.
        sealed(u"zero"_s);
        const QString one = sealed(u"one"_s);
        const QString two = sealed(u"two"_s);
        for (const auto &[content, text] : {std::pair(one, u"one"_s), std::pair(two, u"two"_s)}) {
            chat.screen->messages.append(message(text, u"9"_s, content));
            for (int redraw = 0; redraw < 3; ++redraw)
                QCOMPARE(read(), text);
            QCOMPARE(shown(chat, MessageRows::TextRole, chat.screen->rows()->count() - 1), foreign);
            QVERIFY(shown(chat, MessageRows::SpokenRole).toString().contains(text));
            QCOMPARE(chat.screen->lineOf(content), text);
        }
    }

    void everyTypeHasItsKind() {
        OpenChat chat;
        MessengerMessage record = message(u"m"_s, u"9"_s);
        chat.screen->messages.append(record);
        const auto kindOf = [&](MessageType type) {
            record.type = type;
            chat.screen->messages.replace(0, record);
            return shown(chat, MessageRows::KindRole).toString();
        };
        QCOMPARE(kindOf(MessageType::text), "text");
        QCOMPARE(kindOf(MessageType::sticker), "sticker");
        // Of a poll in the history only the question is there.
        QCOMPARE(kindOf(MessageType::poll), "text");
        record.poll = MessengerPoll();
        QCOMPARE(kindOf(MessageType::poll), "poll");
        QCOMPARE(kindOf(MessageType::text), "poll");
    }

    void aLongTextIsCutBetweenCharacters() {
        // A surrogate pair, a family, a letter with marks, a flag.
        for (const QString &character : {u"😀"_s, u"👩‍👩‍👧"_s, u"e\u0301\u0323"_s, u"🇩🇪"_s}) {
            for (qsizetype shift = 0; shift < character.size(); ++shift) {
                const InRow row(character.toUtf8() + QByteArray::number(shift));
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
    }

    void manyReactionsTakeLittleRoom() {
        OpenChat chat;
        MessengerMessage record = message(u"m"_s, u"9"_s);
        for (int number = 0; number < 10'000; ++number)
            record.reactions.append(MessageReaction{QString(100'000, u'x'), {u"9"_s, u"7"_s}});
        chat.screen->messages.append(record);
        const QStringList labels = shown(chat, MessageRows::ReactionsRole).toStringList();
        QCOMPARE(labels.size(), 21);
        QCOMPARE(labels.last(), "+9980");
        QVERIFY(labels.first().size() < 50 && labels.first().endsWith(" 2"));
    }

    void aRowIsSpokenWithItsState() {
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
};

ORVANE_TEST_MAIN(TestMessageRows)
#include "tst_message_rows.moc"

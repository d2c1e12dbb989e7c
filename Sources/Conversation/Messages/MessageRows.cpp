// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessageRows.h"

#include "Conversation/Messages/MessagePlacement.h"
#include "Interface/DisplayTimes.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Nobody listens to more of one message in a list.
constexpr qsizetype spokenLength = 2000;

QString kindOf(const MessengerMessage &message) {
    if (message.poll)
        return u"poll"_s;
    return rawText(message.type == MessageType::poll ? MessageType::text : message.type);
}

/// The nearest place at or before `length` that no visible character straddles; `length` in an endless one.
qsizetype cutAt(const QString &text, qsizetype length) {
    constexpr qsizetype longestCharacter = 64;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.left(length + longestCharacter));
    finder.setPosition(length);
    const qsizetype boundary = finder.isAtBoundary() ? length : finder.toPreviousBoundary();
    return boundary > length - longestCharacter ? boundary : length - text.at(length - 1).isHighSurrogate();
}

QStringList labels(const QList<MessageReaction> &reactions) {
    // More than any emoji has; a server may send any text for one.
    constexpr qsizetype longestEmoji = 32;
    QStringList labels;
    const qsizetype shown = std::min(reactions.size(), MessageRows::mostReactions);
    for (const MessageReaction &reaction : reactions.first(shown)) {
        labels.append(reaction.emoji.left(longestEmoji));
        if (reaction.userIDs.size() >= 2)
            labels.last() += u" %1"_s.arg(reaction.userIDs.size());
    }
    if (const qsizetype hidden = reactions.size() - shown; hidden > 0)
        labels.append(u"+%1"_s.arg(hidden));
    return labels;
}

} // namespace

MessageRows::MessageRows(Conversation &chat, const MessagePins &pins, const MessageTranslation &translation)
    : m_chat(chat)
    , m_pins(pins)
    , m_translation(translation) {
    follow();
}

const QList<MessengerMessage> &MessageRows::records() const {
    return m_chat.messages.records();
}

void MessageRows::follow() {
    const RecordListModel *messages = &m_chat.messages;
    connect(messages, &QAbstractItemModel::rowsAboutToBeInserted, this,
            [this](const QModelIndex &, int first, int last) {
                const int row = rowCount() - first;
                beginInsertRows({}, row, row + last - first);
            });
    connect(messages, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex &, int first, int last) {
                endInsertRows();
                tellAround(turned(last), turned(first));
            });
    connect(messages, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex &, int first, int last) {
                beginRemoveRows({}, turned(last), turned(first));
            });
    connect(messages, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex &, int first, int) {
        endRemoveRows();
        tellAround(turned(first) + 1, turned(first));
        tell(0, rowCount() - 1, {QuoteSenderRole, QuoteTextRole});
    });
    connect(messages, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &first, const QModelIndex &last) {
                tell(turned(last.row()), turned(first.row()));
                for (int record = first.row(); record <= last.row(); ++record)
                    tellAnswersTo(records().at(record).id);
            });
    connect(messages, &RecordListModel::countChanged, this, &MessageRows::countChanged);
    connect(&m_pins, &MessagePins::pinnedMessageIDsChanged, this, [this] {
        tell(0, rowCount() - 1, {PinnedRole, SpokenRole});
    });
    connect(&m_translation, &MessageTranslation::translatedTextChanged, this,
            [this] { tell(0, rowCount() - 1, {TranslationRole}); });
}

void MessageRows::tell(int firstRow, int lastRow, const QList<int> &roles) {
    if (firstRow <= lastRow)
        Q_EMIT dataChanged(index(firstRow), index(lastRow), roles);
}

void MessageRows::tellAnswersTo(const QString &messageID) {
    for (int row = 0; row < rowCount(); ++row) {
        if (records().at(turned(row)).replyToID == messageID)
            tell(row, row, {QuoteSenderRole, QuoteTextRole});
    }
}

void MessageRows::tellAround(int firstRow, int lastRow) {
    for (const int neighbour : {firstRow - 1, lastRow + 1}) {
        if (neighbour >= 0 && neighbour < rowCount())
            tell(neighbour, neighbour, {StartsDayRole, StartsRunRole, EndsRunRole});
    }
}

int MessageRows::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : int(records().size());
}

QHash<int, QByteArray> MessageRows::roleNames() const {
    return {{KindRole, "kind"},
            {OwnRole, "own"},
            {SenderIDRole, "senderID"},
            {SenderRole, "sender"},
            {StartsDayRole, "startsDay"},
            {StartsRunRole, "startsRun"},
            {EndsRunRole, "endsRun"},
            {TimestampRole, "timestamp"},
            {TextRole, "text"},
            {CutRole, "isCut"},
            {QuoteSenderRole, "quoteSender"},
            {QuoteTextRole, "quoteText"},
            {ForwardedRole, "forwardedFrom"},
            {TranslationRole, "translation"},
            {EditedRole, "edited"},
            {PinnedRole, "pinned"},
            {StarredRole, "starred"},
            {DeliveryRole, "delivery"},
            {ReactionsRole, "reactions"},
            {PollRole, "poll"},
            {SpokenRole, "spoken"}};
}

QVariant MessageRows::data(const QModelIndex &index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const int place = turned(index.row());
    const MessengerMessage &message = records().at(place);
    switch (role) {
    case KindRole:
        return kindOf(message);
    case OwnRole:
        return m_chat.isOwn(message);
    case SenderIDRole:
        return message.senderID;
    case SenderRole:
        return senderOf(message);
    case StartsDayRole:
        return MessagePlacement::of(records(), place).startsDay;
    case StartsRunRole:
        return MessagePlacement::of(records(), place).startsRun;
    case EndsRunRole:
        return MessagePlacement::of(records(), place).endsRun;
    case TimestampRole:
        return message.timestamp;
    case TextRole: {
        const QString whole = text(message);
        return whole.first(shownLength(message, whole));
    }
    case CutRole: {
        const QString whole = text(message);
        return shownLength(message, whole) < whole.size();
    }
    case QuoteSenderRole: {
        const MessengerMessage *question = answered(message);
        return question ? m_chat.nameInChat(question->senderID) : QString();
    }
    case QuoteTextRole: {
        const MessengerMessage *question = answered(message);
        return question ? m_chat.lineOf(question->content) : QString();
    }
    case ForwardedRole:
        return message.forwardedFrom ? message.forwardedFrom->originalSenderName : QString();
    case TranslationRole:
        return m_translation.translatedText.value().value(message.id).toString();
    case EditedRole:
        return message.editedAt.has_value();
    case PinnedRole:
        return m_pins.isPinned(message.id);
    case StarredRole:
        return message.isStarred;
    case DeliveryRole:
        return rawText(message.deliveryStatus);
    case ReactionsRole:
        return labels(message.reactions);
    case PollRole:
        return message.poll ? QVariant::fromValue(*message.poll) : QVariant();
    case SpokenRole:
        return spoken(message);
    default:
        return {};
    }
}

MessengerMessage MessageRows::record(int row) const {
    return row >= 0 && row < rowCount() ? records().at(turned(row)) : MessengerMessage();
}

void MessageRows::showMore(int row) {
    if (row < 0 || row >= rowCount())
        return;
    m_furtherPieces[records().at(turned(row)).id] += 1;
    tell(row, row, {TextRole, CutRole});
}

void MessageRows::readAgain() {
    tell(0, rowCount() - 1, {TextRole, CutRole, QuoteTextRole, SpokenRole});
}

void MessageRows::nameAgain() {
    tell(0, rowCount() - 1, {SenderRole, QuoteSenderRole, SpokenRole});
}

QString MessageRows::text(const MessengerMessage &message) const {
    return m_chat.cipher.plainText(message.content);
}

qsizetype MessageRows::shownLength(const MessengerMessage &message, const QString &text) const {
    const qsizetype wanted = pieceLength * (1 + m_furtherPieces.value(message.id));
    return text.size() <= wanted ? text.size() : cutAt(text, wanted);
}

const MessengerMessage *MessageRows::answered(const MessengerMessage &message) const {
    const int found = message.replyToID ? m_chat.messages.rowOf(*message.replyToID) : -1;
    return found < 0 ? nullptr : &records().at(found);
}

QString MessageRows::senderOf(const MessengerMessage &message) const {
    const bool named = m_chat.chat.type == ChatType::group && !m_chat.isOwn(message);
    return named ? m_chat.senderName(message.senderID) : QString();
}

QString MessageRows::spoken(const MessengerMessage &message) const {
    QStringList words{m_chat.nameInChat(message.senderID), text(message).left(spokenLength),
                      DisplayTimes::clock(message.timestamp)};
    if (message.editedAt)
        words << u"edited"_s;
    if (message.isStarred)
        words << u"starred"_s;
    if (m_pins.isPinned(message.id))
        words << u"pinned"_s;
    words << (m_chat.isOwn(message) ? rawText(message.deliveryStatus) : u"received"_s);
    return words.join(u", "_s);
}

} // namespace orvane

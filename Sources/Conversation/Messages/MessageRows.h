// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Actions/MessagePins.h"
#include "Conversation/Actions/MessageTranslation.h"

#include <QAbstractListModel>
#include <QHash>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// The messages of an open chat as their rows read, in roles of plain values, the newest first: that is where
/// the view begins, so that rows of unknown height above it move nothing in sight. Main thread.
class MessageRows : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("An open chat has its rows.")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        /// The type of the message, which decides what draws it; "poll" only where there is a poll to draw.
        KindRole = Qt::UserRole,
        OwnRole,
        SenderIDRole,
        /// In chats of many the sender's name; empty for own messages and in direct chats.
        SenderRole,
        /// No message of the same day stands before it.
        StartsDayRole,
        /// A run is an unbroken row of messages of one sender.
        StartsRunRole,
        EndsRunRole,
        TimestampRole,
        /// As a person reads it; of a long text as much as `showMore` has asked for.
        TextRole,
        /// There is more of the text.
        CutRole,
        /// Of the message that this one answers; both empty without one.
        QuoteSenderRole,
        QuoteTextRole,
        /// Whom a forwarded message came from; empty for others.
        ForwardedRole,
        TranslationRole,
        EditedRole,
        PinnedRole,
        StarredRole,
        DeliveryRole,
        /// The emoji with their counts, and last what there was no room for.
        ReactionsRole,
        PollRole,
        /// The row in words for assistive technology: sender, text, time and state.
        SpokenRole,
    };

    /// Characters of a very long text that are laid out at once.
    static constexpr qsizetype pieceLength = 8000;
    /// Of different emoji under a message.
    static constexpr qsizetype mostReactions = 20;

    /// They all outlive the rows.
    MessageRows(Conversation &chat, const MessagePins &pins, const MessageTranslation &translation);

    int count() const { return rowCount(); }
    int rowCount(const QModelIndex &parent = {}) const override;
    QHash<int, QByteArray> roleNames() const override;
    QVariant data(const QModelIndex &index, int role) const override;

    /// The message of a row; an empty one where there is no such row.
    Q_INVOKABLE orvane::MessengerMessage record(int row) const;
    /// What is sealed may be read now.
    void readAgain();
    /// The contacts are others now.
    void nameAgain();
    /// Lays out one more piece of a long text.
    Q_INVOKABLE void showMore(int row);

Q_SIGNALS:
    void countChanged();

private:
    const QList<MessengerMessage> &records() const;
    /// The order of the records is the other way round.
    int turned(int row) const { return rowCount() - 1 - row; }
    void follow();
    void tell(int firstRow, int lastRow, const QList<int> &roles = {});
    /// What was written in answer to a message shows how that reads now.
    void tellAnswersTo(const QString &messageID);
    /// A row came between its neighbours, or went.
    void tellAround(int firstRow, int lastRow);

    QString text(const MessengerMessage &message) const;
    qsizetype shownLength(const MessengerMessage &message, const QString &text) const;
    const MessengerMessage *answered(const MessengerMessage &message) const;
    QString senderOf(const MessengerMessage &message) const;
    QString spoken(const MessengerMessage &message) const;

    Conversation &m_chat;
    const MessagePins &m_pins;
    const MessageTranslation &m_translation;
    /// Pieces that are shown beyond the first, by message id.
    QHash<QString, int> m_furtherPieces;
};

} // namespace orvane

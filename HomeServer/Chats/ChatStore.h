// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

#include <QJsonArray>

#include <optional>

// Chats and who is in them.
namespace orvane::homeserver {

constexpr auto lobbyId = "lobby";

struct NewChat {
    QString type; // "direct", "group" or "channel"
    std::optional<QString> title = {};
    bool aiEnabled = true;
    bool federated = false;
    bool zkMode = false;
    std::optional<QString> roomId = {};
};

QString createChat(Work &work, const NewChat &chat, qint64 owner, const QList<qint64> &others);

// The one direct chat of two people, made when missing.
QString directChat(Work &work, qint64 one, qint64 other);

// The chat in which a person talks to nobody else, made when missing.
QString savedChat(Work &work, qint64 userId);

// The people in a list of ids that a new chat is to have besides its owner; refuses with 404 when there is
// no such person, and with 403 for somebody else's private bot. An id of 0 is how clients write one they
// could not read.
QList<qint64> otherPeople(Database &database, const QList<qint64> &ids, qint64 owner);

// Does nothing for somebody who is in the chat already. The newcomer starts with everything read.
void addMember(Work &work, const QString &chatId, qint64 userId, const QString &role = {});

// Puts a new account where everybody starts: the Lobby and direct chats with the robots; tells the others.
void welcome(Work &work, qint64 userId);

// Refuses with 404 when there is no such chat and with 403 when the user is not in it.
void requireMember(Database &database, const QString &chatId, qint64 userId);

// Refuses with 403 unless the member runs the chat.
void requireOwner(Database &database, const QString &chatId, qint64 userId);

QList<qint64> members(Database &database, const QString &chatId);

// Everybody who shares a chat with the user or is their contact; not the user.
QList<qint64> acquaintances(Database &database, qint64 userId);

// The sequence number of the last message in any chat of the user, 0 without one.
qint64 syncCursor(Database &database, qint64 userId);

// Which of a member's chats; an empty text means all.
struct ChatFilter {
    QString type = {};
    QString id = {};
};

// The chats as their member sees them, the latest first.
QJsonArray chatRecords(Database &database, qint64 userId, const ChatFilter &filter = {});

// One chat of a member; refuses with 404 when it is none.
QJsonObject chatRecord(Database &database, const QString &chatId, qint64 userId);

} // namespace orvane::homeserver

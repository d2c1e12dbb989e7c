// SPDX-License-Identifier: MIT
#include "HomeServer/Store/Schema.h"

#include "HomeServer/Security/Names.h"
#include "HomeServer/Store/Query.h"
#include "HomeServer/Store/Words.h"

#include <array>
#include <span>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// Times are Unix seconds. Messages are ordered by seq, which never repeats.
constexpr std::array versionOne = {
    R"(CREATE TABLE users (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
        username TEXT NOT NULL,
        username_key TEXT NOT NULL UNIQUE,
        display_name TEXT NOT NULL,
        display_key TEXT NOT NULL,
        password_hash TEXT,
        is_bot INTEGER NOT NULL DEFAULT 0,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE devices (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        id TEXT NOT NULL,
        name TEXT NOT NULL,
        platform TEXT NOT NULL,
        created_at REAL NOT NULL,
        seen_at REAL NOT NULL,
        PRIMARY KEY (user_id, id)))",
    R"(CREATE TABLE tokens (
        hash BLOB PRIMARY KEY,
        user_id INTEGER NOT NULL,
        device_id TEXT NOT NULL,
        created_at REAL NOT NULL,
        FOREIGN KEY (user_id, device_id) REFERENCES devices(user_id, id) ON DELETE CASCADE))",
    R"(CREATE INDEX tokens_by_device ON tokens(user_id, device_id))",
    R"(CREATE TABLE idempotency (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        key TEXT NOT NULL,
        target TEXT NOT NULL,
        status INTEGER NOT NULL,
        answer BLOB NOT NULL,
        created_at REAL NOT NULL,
        PRIMARY KEY (user_id, key)))",
    R"(CREATE TABLE chats (
        id TEXT PRIMARY KEY,
        type TEXT NOT NULL,
        title TEXT,
        direct_key TEXT UNIQUE,
        saved_of INTEGER UNIQUE REFERENCES users(id) ON DELETE CASCADE,
        ai_enabled INTEGER NOT NULL DEFAULT 1,
        federated INTEGER NOT NULL DEFAULT 0,
        zk_mode INTEGER NOT NULL DEFAULT 0,
        room_id TEXT,
        encrypted_meta TEXT,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE members (
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        role TEXT NOT NULL DEFAULT 'member',
        read_seq INTEGER NOT NULL DEFAULT 0,
        joined_at REAL NOT NULL,
        PRIMARY KEY (chat_id, user_id)))",
    R"(CREATE INDEX members_by_user ON members(user_id))",
    R"(CREATE TABLE remote_members (
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        remote_id TEXT NOT NULL,
        PRIMARY KEY (chat_id, remote_id)))",
    R"(CREATE TABLE messages (
        seq INTEGER PRIMARY KEY AUTOINCREMENT,
        id TEXT NOT NULL UNIQUE,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        sender_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        type TEXT NOT NULL,
        content TEXT NOT NULL,
        created_at REAL NOT NULL,
        edited_at REAL,
        reply_to TEXT,
        forwarded_from TEXT,
        zk_payload TEXT))",
    R"(CREATE INDEX messages_by_chat ON messages(chat_id, seq))",
    R"(CREATE INDEX messages_by_sender ON messages(sender_id))",
    R"(CREATE VIRTUAL TABLE message_words USING fts5(
        content, content = 'messages', content_rowid = 'seq', tokenize = 'unicode61 remove_diacritics 2'))",
    R"(CREATE TRIGGER words_added AFTER INSERT ON messages BEGIN
        INSERT INTO message_words(rowid, content) VALUES (new.seq, new.content);
        END)",
    R"(CREATE TRIGGER words_removed AFTER DELETE ON messages BEGIN
        INSERT INTO message_words(message_words, rowid, content) VALUES ('delete', old.seq, old.content);
        END)",
    R"(CREATE TRIGGER words_changed AFTER UPDATE OF content ON messages BEGIN
        INSERT INTO message_words(message_words, rowid, content) VALUES ('delete', old.seq, old.content);
        INSERT INTO message_words(rowid, content) VALUES (new.seq, new.content);
        END)",
    R"(CREATE TABLE reactions (
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        emoji TEXT NOT NULL,
        created_at REAL NOT NULL,
        PRIMARY KEY (message_id, user_id, emoji)))",
    R"(CREATE TABLE stars (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        created_at REAL NOT NULL,
        PRIMARY KEY (user_id, message_id)))",
    R"(CREATE INDEX stars_by_message ON stars(message_id))",
    R"(CREATE TABLE pins (
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        created_at REAL NOT NULL,
        PRIMARY KEY (chat_id, message_id)))",
    R"(CREATE INDEX pins_by_message ON pins(message_id))",
    R"(CREATE TABLE mentions (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        PRIMARY KEY (user_id, message_id)))",
    R"(CREATE INDEX mentions_by_message ON mentions(message_id))",
    R"(CREATE TABLE poll_votes (
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        option_id TEXT NOT NULL,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        PRIMARY KEY (message_id, option_id, user_id)))",
    R"(CREATE TABLE invites (
        code TEXT PRIMARY KEY,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        created_by INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        expires_at REAL NOT NULL))",
    R"(CREATE TABLE folders (
        id TEXT PRIMARY KEY,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        name TEXT NOT NULL,
        icon TEXT NOT NULL,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE folder_chats (
        folder_id TEXT NOT NULL REFERENCES folders(id) ON DELETE CASCADE,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        PRIMARY KEY (folder_id, chat_id)))",
    R"(CREATE TABLE files (
        id TEXT PRIMARY KEY,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        kind TEXT NOT NULL,
        name TEXT NOT NULL,
        mime_type TEXT NOT NULL,
        size INTEGER NOT NULL,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE push_tokens (
        device_token TEXT PRIMARY KEY,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        platform TEXT NOT NULL,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE contacts (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        contact_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        PRIMARY KEY (user_id, contact_id)))",
    R"(CREATE TABLE contact_requests (
        from_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        to_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        created_at REAL NOT NULL,
        PRIMARY KEY (from_id, to_id)))",
    R"(CREATE TABLE address_book (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        phone_hash TEXT NOT NULL,
        display_name TEXT NOT NULL,
        from_address_book INTEGER NOT NULL,
        organization TEXT,
        avatar_hash TEXT,
        PRIMARY KEY (user_id, phone_hash)))",
    R"(CREATE TABLE key_bundles (
        user_id INTEGER PRIMARY KEY REFERENCES users(id) ON DELETE CASCADE,
        identity_key TEXT NOT NULL,
        signed_pre_key TEXT NOT NULL,
        signed_pre_key_signature TEXT NOT NULL))",
    R"(CREATE TABLE one_time_keys (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        pre_key TEXT NOT NULL))",
    R"(CREATE INDEX one_time_keys_by_user ON one_time_keys(user_id, id))",
    R"(CREATE TABLE zk_identities (
        user_id INTEGER PRIMARY KEY REFERENCES users(id) ON DELETE CASCADE,
        public_key_jwk TEXT NOT NULL))",
    R"(CREATE TABLE zk_keys (
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        wrapped_key TEXT NOT NULL,
        PRIMARY KEY (chat_id, user_id)))",
    R"(CREATE TABLE bots (
        user_id INTEGER PRIMARY KEY REFERENCES users(id) ON DELETE CASCADE,
        owner_id INTEGER REFERENCES users(id) ON DELETE CASCADE,
        description TEXT NOT NULL,
        webhook_url TEXT NOT NULL,
        web_app_url TEXT NOT NULL,
        is_public INTEGER NOT NULL))",
    R"(CREATE TABLE mini_app_data (
        id INTEGER PRIMARY KEY AUTOINCREMENT,
        bot_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        data TEXT NOT NULL,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE skills (
        id TEXT PRIMARY KEY,
        slug TEXT NOT NULL UNIQUE,
        owner_id INTEGER REFERENCES users(id) ON DELETE SET NULL,
        name TEXT NOT NULL,
        description TEXT NOT NULL,
        category TEXT NOT NULL,
        icon TEXT NOT NULL,
        system_prompt TEXT NOT NULL,
        triggers TEXT NOT NULL,
        is_public INTEGER NOT NULL,
        created_at REAL NOT NULL))",
    R"(CREATE TABLE skill_installs (
        skill_id TEXT NOT NULL REFERENCES skills(id) ON DELETE CASCADE,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        PRIMARY KEY (skill_id, chat_id)))",
    R"(CREATE TABLE skill_ratings (
        skill_id TEXT NOT NULL REFERENCES skills(id) ON DELETE CASCADE,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        rating INTEGER NOT NULL,
        PRIMARY KEY (skill_id, user_id)))",
    R"(CREATE TABLE agents (
        id TEXT PRIMARY KEY,
        chat_id TEXT NOT NULL REFERENCES chats(id) ON DELETE CASCADE,
        role TEXT NOT NULL,
        created_at REAL NOT NULL,
        UNIQUE (chat_id, role)))",
    R"(CREATE TABLE peers (
        domain TEXT PRIMARY KEY,
        base_url TEXT NOT NULL,
        status TEXT NOT NULL DEFAULT 'unknown'))",
    R"(CREATE TABLE presence (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        device_id TEXT NOT NULL,
        local_ip TEXT NOT NULL,
        subnet TEXT NOT NULL,
        seen_at REAL NOT NULL,
        PRIMARY KEY (user_id, device_id)))",
    R"(CREATE TABLE server_facts (name TEXT PRIMARY KEY, value TEXT NOT NULL))",
};

// Sources are addresses as brakes count them.
constexpr std::array versionTwo = {
    R"(ALTER TABLE users ADD COLUMN skeleton TEXT NOT NULL DEFAULT '')",
    R"(CREATE INDEX users_by_skeleton ON users(skeleton))",
    R"(CREATE TABLE visitors (
        source TEXT NOT NULL,
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        chat_id TEXT NOT NULL,
        seen_at REAL NOT NULL,
        PRIMARY KEY (source, user_id, chat_id)))",
    R"(CREATE INDEX visitors_by_user ON visitors(user_id))",
    R"(CREATE TABLE sign_in_failures (
        name_key TEXT NOT NULL,
        source TEXT NOT NULL,
        at REAL NOT NULL))",
    R"(CREATE INDEX sign_in_failures_by_time ON sign_in_failures(at))",
    // Nobody wrote down whose the peers of before were.
    R"(DROP TABLE peers)",
    R"(CREATE TABLE peers (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        domain TEXT NOT NULL,
        base_url TEXT NOT NULL,
        status TEXT NOT NULL DEFAULT 'unknown',
        PRIMARY KEY (user_id, domain)))",
    R"(ALTER TABLE files ADD COLUMN source TEXT NOT NULL DEFAULT '')",
    R"(ALTER TABLE files ADD COLUMN named INTEGER NOT NULL DEFAULT 0)",
    R"(CREATE TABLE file_uses (
        file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE,
        message_id TEXT NOT NULL REFERENCES messages(id) ON DELETE CASCADE,
        PRIMARY KEY (file_id, message_id)))",
    R"(CREATE INDEX file_uses_by_message ON file_uses(message_id))",
    R"(INSERT INTO file_uses(file_id, message_id) SELECT f.id, m.id FROM files f JOIN messages m
        ON m.type IN ('file', 'image', 'voice') AND instr(m.content, f.id) > 0)",
    R"(UPDATE files SET named = 1 WHERE id IN (SELECT file_id FROM file_uses))",
};

// Nothing keeps a text but the message: answers are made anew, and the index is of plain rows, whose places
// are overwritten when they go.
constexpr std::array versionThree = {
    R"(CREATE TABLE posted (
        user_id INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
        key TEXT NOT NULL,
        target TEXT NOT NULL,
        message_id TEXT NOT NULL,
        created_at REAL NOT NULL,
        PRIMARY KEY (user_id, key)))",
    R"(INSERT INTO posted(user_id, key, target, message_id, created_at)
        SELECT user_id, key, target, json_extract(CAST(answer AS TEXT), '$.message.id'), created_at FROM idempotency
        WHERE json_valid(CAST(answer AS TEXT)) AND json_extract(CAST(answer AS TEXT), '$.message.id') IS NOT NULL)",
    R"(DROP TABLE idempotency)",
    R"(DROP TRIGGER words_added)",
    R"(DROP TRIGGER words_removed)",
    R"(DROP TRIGGER words_changed)",
    R"(DROP TABLE message_words)",
    R"(CREATE TABLE message_words (
        word TEXT NOT NULL,
        seq INTEGER NOT NULL REFERENCES messages(seq) ON DELETE CASCADE,
        PRIMARY KEY (word, seq)) WITHOUT ROWID)",
    R"(CREATE INDEX message_words_by_message ON message_words(seq))",
};

void fillSkeletons(Database &database) {
    QList<std::pair<qint64, QString>> names;
    Query rows(database, u"SELECT id, username FROM users"_s);
    while (rows.next())
        names.append({rows.integer(0), rows.text(1)});
    for (const auto &[id, name] : std::as_const(names))
        execute(database, u"UPDATE users SET skeleton = ? WHERE id = ?"_s, {nameSkeleton(name), id});
}

void fillWords(Database &database) {
    Query rows(database, u"SELECT seq, content FROM messages"_s);
    while (rows.next())
        indexWords(database, rows.integer(0), rows.text(1));
}

struct Migration {
    std::span<const char *const> statements;
    void (*finish)(Database &) = nullptr;
};

// The place of each in this list is the version that it starts from.
const std::array migrations = {Migration{versionOne}, Migration{versionTwo, fillSkeletons},
                               Migration{versionThree, fillWords}};

} // namespace

void migrate(Database &database) {
    const qint64 version = integerOf(database, u"PRAGMA user_version"_s);
    const auto newest = static_cast<qint64>(migrations.size());
    if (version > newest)
        throw DatabaseFault("the database was made by a newer server");
    if (version == newest)
        return;
    Transaction transaction(database);
    for (qint64 from = version; from < newest; ++from) {
        const Migration &migration = migrations.at(static_cast<size_t>(from));
        for (const char *statement : migration.statements)
            execute(database, QString::fromUtf8(statement));
        if (migration.finish)
            migration.finish(database);
    }
    execute(database, u"PRAGMA user_version = %1"_s.arg(newest));
    transaction.commit();
    // What the old tables held is in no page of the new file.
    if (version > 0)
        execute(database, u"VACUUM"_s);
}

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#include "HomeServer/Files/LostFiles.h"

#include "HomeServer/Files/FileStore.h"
#include "HomeServer/Operations/Call.h"
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>
#include <QSet>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr double graceSeconds = 3600;
constexpr qsizetype mostFiles = 20; // of one message

} // namespace

void noteFiles(Database &database, const QString &messageId, const QString &content) {
    static const QRegularExpression name(u"[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}"_s);
    execute(database, u"DELETE FROM file_uses WHERE message_id = ?"_s, {messageId});
    QSet<QString> ids;
    auto found = name.globalMatch(content);
    while (found.hasNext() && ids.size() < mostFiles)
        ids.insert(found.next().captured());
    for (const QString &id : std::as_const(ids)) {
        if (execute(database, u"UPDATE files SET named = 1 WHERE id = ?"_s, {id}) == 0)
            continue;
        execute(database, u"INSERT INTO file_uses(file_id, message_id) VALUES (?, ?)"_s, {id, messageId});
    }
}

bool namesFiles(Database &database, const QString &messageId) {
    return exists(database, u"SELECT 1 FROM file_uses WHERE message_id = ?"_s, {messageId});
}

void dropLostFiles(Work &work) {
    QStringList lost;
    Query rows(work.database(),
               u"SELECT id FROM files WHERE (named = 1 OR created_at < ?) "
               "AND NOT EXISTS (SELECT 1 FROM file_uses u WHERE u.file_id = files.id)"_s,
               {work.services.now() - graceSeconds});
    while (rows.next())
        lost.append(rows.text(0));
    for (const QString &id : std::as_const(lost))
        execute(work.database(), u"DELETE FROM files WHERE id = ?"_s, {id});
    work.afterwards([&files = work.services.files, lost] {
        for (const QString &id : lost)
            files.remove(id);
    });
}

void dropStrayBytes(Work &work) {
    QSet<QString> kept;
    Query rows(work.database(), u"SELECT id FROM files"_s);
    while (rows.next())
        kept.insert(rows.text(0));
    work.afterwards([&files = work.services.files, kept] {
        for (const QString &id : files.ids())
            if (!kept.contains(id))
                files.remove(id);
    });
}

} // namespace orvane::homeserver

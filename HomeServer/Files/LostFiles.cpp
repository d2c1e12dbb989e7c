// SPDX-License-Identifier: MIT
#include "HomeServer/Files/LostFiles.h"

#include "HomeServer/Files/FileStore.h"
#include "HomeServer/Operations/Call.h"
#include "HomeServer/Store/Query.h"

#include <QSet>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

void dropLostFiles(Work &work) {
    execute(
        work.database(),
        u"DELETE FROM files WHERE kind = 'voice' AND NOT EXISTS (SELECT 1 FROM messages m "
        "WHERE m.chat_id = files.chat_id AND m.type = 'voice' AND m.content LIKE 'voice:' || files.id || ':%')"_s);
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

// SPDX-License-Identifier: MIT
#include "HomeServer/Files/FileOperations.h"

#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Files/FileStore.h"
#include "HomeServer/Files/LostFiles.h"
#include "HomeServer/Files/VoiceLength.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Http/Multipart.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

#include <QMimeDatabase>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 200;
constexpr qint64 mostUnnamedOfSource = 128LL * 1024 * 1024; // bytes
constexpr qint64 mostUnnamedOfChat = 256LL * 1024 * 1024;

Multipart requireFile(const Call &call) {
    Multipart form = parseMultipart(call.request.contentType, call.request.body);
    if (!form.hasFile || form.file.isEmpty())
        refuseBadRequest();
    return form;
}

// The name to show: the last component of what the client sent, without what separates the fields of a
// message's content and without what terminals and shells would act on.
QString shownName(const QByteArray &sent) {
    QString name = QString::fromUtf8(sent);
    name = name.mid(std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\')) + 1);
    for (QChar &c : name)
        if (c == u':' || c.category() == QChar::Other_Control || c.category() == QChar::Other_Format)
            c = u'_';
    name = name.left(longestName);
    return name.isEmpty() || name == "."_L1 || name == ".."_L1 ? u"file"_s : name;
}

QString keep(Call &call, const QString &chat, QLatin1StringView kind, const Multipart &form,
             const QString &mimeType) {
    const QString id = newId();
    execute(call.database(),
            u"INSERT INTO files(id, chat_id, kind, name, mime_type, size, created_at, source) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {id, chat, QString(kind), shownName(form.fileName), mimeType, form.file.size(),
             call.services.now(), sourceOf(call.request.address)});
    call.services.files.write(id, form.file);
    return id;
}

// Bytes that no message names yet, which anybody behind the address of a member may leave here.
void checkQuotas(Call &call, const QString &chat, qint64 size) {
    const auto unnamed = [&](const QString &column, const QString &value) {
        return integerOf(call.database(),
                         u"SELECT coalesce(sum(size), 0) FROM files WHERE named = 0 AND %1 = ?"_s.arg(column),
                         {value});
    };
    if (unnamed(u"source"_s, sourceOf(call.request.address)) + size > mostUnnamedOfSource ||
        unnamed(u"chat_id"_s, chat) + size > mostUnnamedOfChat)
        throw Refusal(507, "storage_full");
}

// Comes without a token: it takes one's having been in the chat from this address, and all it can do is leave
// bytes for an hour under a name that nobody can guess.
Answer upload(Call &call) {
    const Multipart form = requireFile(call);
    const QString chat = QString::fromUtf8(form.fields.value("chat_id"));
    if (!exists(call.database(), u"SELECT 1 FROM chats WHERE id = ?"_s, {chat}))
        refuseNotFound();
    if (!call.services.visitors.wasActive(call.request.address, chat, call.services.now()))
        refuseForbidden();
    dropLostFiles(call);
    checkQuotas(call, chat, form.file.size());
    const QString name = shownName(form.fileName);
    const QString mimeType = QMimeDatabase().mimeTypeForFileNameAndData(name, form.file).name();
    const QString id = keep(call, chat, "file"_L1, form, mimeType);
    return Answer({{"path"_L1, u"api/messenger/files/"_s + id},
                   {"filename"_L1, name},
                   {"mime_type"_L1, mimeType},
                   {"size"_L1, form.file.size()}},
                  201);
}

// Only what can't act in a viewer keeps its type.
QByteArray harmlessType(const QString &mimeType) {
    const bool media = mimeType.startsWith("image/"_L1) || mimeType.startsWith("audio/"_L1) ||
                       mimeType.startsWith("video/"_L1);
    return media && !mimeType.contains("svg"_L1) ? mimeType.toLatin1()
                                                 : QByteArray("application/octet-stream");
}

// The unguessable id in the path is the permission: pictures are loaded without a token.
Answer download(Call &call) {
    Query row(call.database(), u"SELECT mime_type FROM files WHERE id = ? AND kind = 'file'"_s,
              {call.part("file")});
    if (!row.next())
        refuseNotFound();
    return Answer(call.services.files.read(call.part("file")), harmlessType(row.text(0)));
}

Answer newVoiceMessage(Call &call) {
    const QString chat = call.part("chat");
    requireMember(call.database(), chat, call.caller.userId);
    const Multipart form = requireFile(call);
    if (form.fields.contains("chat_id") && form.fields["chat_id"] != chat.toUtf8())
        refuseBadRequest();
    return postOnce(call, [&] {
        const QString id = keep(call, chat, "voice"_L1, form, u"audio/mp4"_s);
        NewMessage message;
        message.chatId = chat;
        message.type = u"voice"_s;
        message.content = u"voice:%1:%2"_s.arg(id, QString::number(voiceSeconds(form.file), 'f', 1));
        return message;
    });
}

Answer voice(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    QString id = call.part("file");
    if (!id.endsWith(".m4a"_L1))
        refuseNotFound();
    id.chop(4);
    if (!exists(call.database(), u"SELECT 1 FROM files WHERE id = ? AND chat_id = ? AND kind = 'voice'"_s,
                {id, call.part("chat")}))
        refuseNotFound();
    return Answer(call.services.files.read(id), "audio/mp4");
}

} // namespace

void addFiles(Router &router) {
    router.addUpload("POST", "files/upload", upload, Access::Open);
    router.add("GET", "files/{file}", download, Access::Open);
    router.addUpload("POST", "chats/{chat}/voice-messages", newVoiceMessage);
    router.add("GET", "voice/{chat}/{file}", voice);
}

} // namespace orvane::homeserver

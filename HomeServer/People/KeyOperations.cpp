// SPDX-License-Identifier: MIT
#include "HomeServer/People/KeyOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Brakes.h"
#include "HomeServer/Store/Query.h"

#include <QJsonDocument>

#include <optional>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestKey = 1024;
constexpr qsizetype largestObject = 64LL * 1024;

QString requireBase64(const QString &text) {
    const auto decoded =
        QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || text.isEmpty() || text.size() > longestKey)
        refuseBadRequest();
    return text;
}

QString base64(Call &call, QLatin1StringView key) {
    return requireBase64(fields::text(call.body, key, longestKey));
}

QString boundedJson(const QJsonObject &object) {
    const QByteArray json = QJsonDocument(object).toJson(QJsonDocument::Compact);
    if (json.size() > largestObject)
        refuseBadRequest();
    return QString::fromUtf8(json);
}

QJsonObject parsed(const QString &json) {
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

qint64 remainingKeys(Database &database, qint64 user) {
    return integerOf(database, u"SELECT count(*) FROM one_time_keys WHERE user_id = ?"_s, {user});
}

// The later upload wins as a whole: its owner keeps no earlier one-time keys either.
Answer uploadKeys(Call &call) {
    const qint64 self = call.caller.userId;
    const QStringList oneTimeKeys = fields::texts(call.body, "one_time_pre_keys"_L1);
    execute(call.database(),
            u"INSERT INTO key_bundles(user_id, identity_key, signed_pre_key, signed_pre_key_signature) "
            "VALUES (?, ?, ?, ?) ON CONFLICT DO UPDATE SET identity_key = excluded.identity_key, "
            "signed_pre_key = excluded.signed_pre_key, "
            "signed_pre_key_signature = excluded.signed_pre_key_signature"_s,
            {self, base64(call, "identity_key"_L1), base64(call, "signed_pre_key"_L1),
             base64(call, "signed_pre_key_signature"_L1)});
    execute(call.database(), u"DELETE FROM one_time_keys WHERE user_id = ?"_s, {self});
    for (const QString &key : oneTimeKeys)
        execute(call.database(), u"INSERT INTO one_time_keys(user_id, pre_key) VALUES (?, ?)"_s,
                {self, requireBase64(key)});
    return Answer({{"uploaded"_L1, remainingKeys(call.database(), self)}});
}

std::optional<QString> takeOneTimeKey(Database &database, qint64 user) {
    Query row(database, u"SELECT id, pre_key FROM one_time_keys WHERE user_id = ? ORDER BY id LIMIT 1"_s,
              {user});
    if (!row.next())
        return std::nullopt;
    execute(database, u"DELETE FROM one_time_keys WHERE id = ?"_s, {row.integer(0)});
    return row.text(1);
}

Answer bundle(Call &call) {
    const qint64 user = call.part("user").toLongLong();
    Query row(
        call.database(),
        u"SELECT identity_key, signed_pre_key, signed_pre_key_signature FROM key_bundles WHERE user_id = ?"_s,
        {user});
    if (!row.next())
        refuseNotFound();
    QJsonObject answer{{"identity_key"_L1, row.text(0)},
                       {"signed_pre_key"_L1, row.text(1)},
                       {"signed_pre_key_signature"_L1, row.text(2)}};
    const QString asking = u"%1:%2"_s.arg(call.caller.userId).arg(user);
    if (!call.services.brakes.oneTimeKeys.allows(asking, call.services.now()))
        return Answer(answer);
    if (const auto oneTime = takeOneTimeKey(call.database(), user))
        answer["one_time_pre_key"_L1] = *oneTime;
    return Answer(answer);
}

Answer keyCount(Call &call) {
    return Answer(
        {{"pre_keys_remaining"_L1, remainingKeys(call.database(), call.part("user").toLongLong())}});
}

Answer uploadZkIdentity(Call &call) {
    execute(call.database(),
            u"INSERT INTO zk_identities(user_id, public_key_jwk) VALUES (?, ?) "
            "ON CONFLICT DO UPDATE SET public_key_jwk = excluded.public_key_jwk"_s,
            {call.caller.userId, boundedJson(fields::object(call.body, "public_key_jwk"_L1))});
    return Answer({{"status"_L1, "stored"_L1}});
}

Answer zkIdentity(Call &call) {
    Query row(call.database(), u"SELECT public_key_jwk FROM zk_identities WHERE user_id = ?"_s,
              {call.part("user").toLongLong()});
    if (!row.next())
        refuseNotFound();
    return Answer({{"public_key_jwk"_L1, parsed(row.text(0))}});
}

Answer newZkGroup(Call &call) {
    const qint64 self = call.caller.userId;
    const QString meta = boundedJson(fields::object(call.body, "encrypted_meta"_L1));
    const QJsonObject wrapped = fields::object(call.body, "wrapped_keys"_L1);
    const QList<qint64> others =
        otherPeople(call.database(), fields::integers(call.body, "participants"_L1), self);
    const QString id =
        createChat(call, {.type = u"group"_s, .aiEnabled = false, .zkMode = true}, self, others);
    execute(call.database(), u"UPDATE chats SET encrypted_meta = ? WHERE id = ?"_s, {meta, id});
    for (const qint64 member : members(call.database(), id)) {
        // A member without a key could never read the group.
        const QJsonValue key = wrapped.value(QString::number(member));
        if (!key.isObject())
            refuseBadRequest();
        execute(call.database(), u"INSERT INTO zk_keys(chat_id, user_id, wrapped_key) VALUES (?, ?, ?)"_s,
                {id, member, boundedJson(key.toObject())});
    }
    return Answer({{"chat_id"_L1, id},
                   {"chat"_L1, chatRecord(call.database(), id, self)},
                   {"encrypted_meta"_L1, parsed(meta)}},
                  201);
}

Answer senderKey(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    Query row(call.database(), u"SELECT wrapped_key FROM zk_keys WHERE chat_id = ? AND user_id = ?"_s,
              {call.part("chat"), call.caller.userId});
    if (!row.next())
        refuseNotFound();
    return Answer({{"wrapped_key"_L1, parsed(row.text(0))}});
}

} // namespace

void addKeys(Router &router) {
    router.add("POST", "keys/upload", uploadKeys);
    router.add("GET", "keys/{user}", bundle);
    router.add("GET", "keys/{user}/count", keyCount);
    router.add("POST", "zk/identity", uploadZkIdentity);
    router.add("GET", "zk/identity/{user}", zkIdentity);
    router.add("POST", "chats/zk", newZkGroup);
    router.add("GET", "chats/{chat}/zk/key", senderKey);
}

} // namespace orvane::homeserver

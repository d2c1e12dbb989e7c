// SPDX-License-Identifier: MIT
#include "Model/ChatFolder.h"

#include "Base/Json.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// All texts, or all integers; a mixed list counts as none.
QList<QString> chatIdsOf(const QJsonObject &map) {
    if (auto texts = json::texts(map, u"chat_ids"))
        return *texts;
    QList<QString> ids;
    const QJsonArray elements = json::list(map, u"chat_ids").value_or(QJsonArray());
    for (const auto &element : elements) {
        const auto id = json::asInteger(element);
        if (!id)
            return {};
        ids.append(QString::number(*id));
    }
    return ids;
}

} // namespace

std::optional<ChatFolder> ChatFolder::fromAPI(const QJsonObject &map) {
    const auto id = json::text(map, u"id");
    if (!id)
        return std::nullopt;
    ChatFolder folder;
    folder.id = *id;
    folder.name = json::text(map, u"name").value_or(u"Folder"_s);
    folder.icon = json::text(map, u"icon").value_or(u"📁"_s);
    folder.chatIds = chatIdsOf(map);
    return folder;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Model/ChatListAnswer.h"
#include "Model/MessengerMessage.h"
#include "Ratio.h"

#include "Base/Json.h"

#include <QDateTime>
#include <QJsonArray>

// Bytes to records, against the plain JSON parse of the same bytes.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

QByteArray chatsAnswer(int count) {
    QJsonArray chats;
    for (int index = 0; index < count; ++index)
        chats.append(QJsonObject{{u"id"_s, QString::number(index)},
                                 {u"type"_s, index % 3 ? u"direct"_s : u"group"_s},
                                 {u"title"_s, u"Планёрка по четвергам %1"_s.arg(index)},
                                 {u"participants"_s, QJsonArray{QJsonObject{{u"user_id"_s, index}},
                                                                QJsonObject{{u"user_id"_s, 7}}}},
                                 {u"last_message"_s, u"See you at eleven, bring the \"numbers\"."_s},
                                 {u"last_msg_at"_s, 1'700'000'000.5 + index},
                                 {u"unread_count"_s, index % 5},
                                 {u"ai_enabled"_s, false},
                                 {u"created_at"_s, 1'690'000'000 + index},
                                 {u"updated_at"_s, 1'695'000'000 + index}});
    return json::compact({{u"chats"_s, chats}});
}

QByteArray historyAnswer(int count) {
    QJsonArray messages;
    for (int index = 0; index < count; ++index)
        messages.append(QJsonObject{
            {u"id"_s, u"3f2504e0-4f89-41d3-9a0c-%1"_s.arg(index, 12, 10, QChar(u'0'))},
            {u"chat_id"_s, u"42"_s},
            {u"sender_id"_s, QString::number(index % 3)},
            {u"type"_s, u"text"_s},
            {u"content"_s,
             u"A message of ordinary length, as people write them all day long. №%1"_s.arg(index)},
            {u"created_at"_s, 1'700'000'000.25 + index},
            {u"reactions"_s, QJsonArray{QJsonObject{{u"emoji"_s, u"👍"_s}, {u"user_id"_s, 8}}}}});
    return json::compact({{u"messages"_s, messages}});
}

qsizetype plainParse(const QByteArray &bytes) {
    return json::parse(bytes).toObject().size();
}

} // namespace

int main() {
    const QByteArray chats = chatsAnswer(10'000);
    const QByteArray history = historyAnswer(50);
    const auto decodeChats = [&chats] {
        const QDateTime now = QDateTime::currentDateTime();
        QList<MessengerChat> decoded;
        const CR answer = CR::decode(chats);
        decoded.reserve(answer.chats.size());
        for (const AC &chat : answer.chats)
            decoded.append(chat.toChat(now));
        return decoded.size();
    };
    const auto decodeHistory = [&history] {
        QList<MessengerMessage> decoded;
        for (const QJsonObject &raw : json::objects(*json::parseObject(history), u"messages"))
            if (auto message = MessengerMessage::fromHistory(u"42"_s, raw))
                decoded.append(*message);
        return decoded.size();
    };
    benchmarks::ratio("10,000 chats / JSON parse", 21, decodeChats, [&chats] { return plainParse(chats); });
    benchmarks::ratio("50 messages / JSON parse", 401, decodeHistory,
                      [&history] { return plainParse(history); });
    return 0;
}

// SPDX-License-Identifier: MIT
#include "HomeServer/Robots/RobotAnswers.h"

#include "HomeServer/Robots/Assistant.h"
#include "HomeServer/Robots/RobotAccounts.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

bool isAssistant(Database &database, qint64 robot) {
    return exists(database, u"SELECT 1 FROM users WHERE id = ? AND username = ?"_s,
                  {robot, QString::fromLatin1(assistantName)});
}

} // namespace

bool canAnswer(Database &database, qint64 robot) {
    return isAssistant(database, robot) ||
           exists(database, u"SELECT 1 FROM bots WHERE user_id = ? AND webhook_url = 'builtin://echo'"_s,
                  {robot});
}

NewMessage robotAnswer(Database &database, qint64 robot, const QJsonObject &message) {
    NewMessage answer;
    answer.chatId = message["chat_id"_L1].toString();
    answer.type = message["type"_L1].toString();
    answer.content = message["content"_L1].toString();
    if (isAssistant(database, robot)) {
        answer.type = u"text"_s;
        answer.content =
            assistantAnswer(database, message["sender_id"_L1].toString().toLongLong(), answer.content);
    }
    return answer;
}

} // namespace orvane::homeserver

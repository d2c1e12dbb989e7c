// SPDX-License-Identifier: MIT
#include "HomeServer/Robots/RobotRunner.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Options.h"
#include "HomeServer/Robots/RobotAnswers.h"
#include "HomeServer/Store/Query.h"

#include <QRandomGenerator>
#include <QTimer>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// The robot on the other side of a direct chat; 0 when the sender is a robot or nobody else is one.
qint64 robotFacing(Database &database, const QString &chatId, qint64 sender) {
    return integerOf(
        database,
        u"SELECT u.id FROM chats c JOIN members k ON k.chat_id = c.id JOIN users u ON u.id = k.user_id "
        "WHERE c.id = ?1 AND c.type = 'direct' AND u.is_bot = 1 AND u.id <> ?2 "
        "AND NOT EXISTS (SELECT 1 FROM users WHERE id = ?2 AND is_bot = 1)"_s,
        {chatId, sender});
}

} // namespace

void RobotRunner::notice(const QJsonObject &record) {
    const QString chatId = record["chat_id"_L1].toString();
    const qint64 robot =
        robotFacing(m_services.database, chatId, record["sender_id"_L1].toString().toLongLong());
    if (robot == 0 || !canAnswer(m_services.database, robot))
        return;
    const int configured = m_services.options.botDelay;
    const int delay = configured >= 0 ? configured : QRandomGenerator::global()->bounded(300, 601);
    startTyping(chatId, robot);
    QTimer::singleShot(delay, this, [this, record, robot] { answer(record, robot); });
}

void RobotRunner::startTyping(const QString &chatId, qint64 robot) {
    Work work(m_services);
    work.run([&] { work.tell(members(work.database(), chatId), typingEvent(chatId, robot, true)); });
}

void RobotRunner::answer(const QJsonObject &record, qint64 robot) {
    const QString chatId = record["chat_id"_L1].toString();
    Work work(m_services);
    try {
        work.run([&] {
            // The chat may have gone in the meantime, with everybody in it.
            requireMember(work.database(), chatId, robot);
            work.tell(members(work.database(), chatId), typingEvent(chatId, robot, false));
            postMessage(work, robotAnswer(work.database(), robot, record), {robot, {}});
        });
    } catch (const std::exception &fault) {
        qWarning("a robot could not answer: %s", fault.what());
    }
}

} // namespace orvane::homeserver

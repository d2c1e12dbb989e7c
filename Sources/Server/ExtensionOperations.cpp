// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// Bots, mini apps, skills.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

namespace {

QCoro::Task<SkillCatalogue> skillsOf(QCoro::Task<QByteArray> answer) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    co_return SkillCatalogue{json::objects(object, u"skills"),
                             json::texts(object, u"categories").value_or(QStringList())};
}

} // namespace

QCoro::Task<QJsonObject> MessengerAPI::listBots(const QString &userID) {
    return mapOrEmpty(get(messenger(u"/bots?user_id=%1", userID)));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::discoverBots() {
    return listUnder(get(messenger(u"/bots/discover")), u"bots"_s);
}

QCoro::Task<QJsonObject> MessengerAPI::openBotChat(const QString &botId) {
    return mapOrEmpty(post(messenger(u"/bots/%1/chat", botId), {}));
}

QCoro::Task<QJsonObject> MessengerAPI::botStats(const QString &botId) {
    return mapOrEmpty(get(messenger(u"/bots/%1/stats", botId)));
}

QCoro::Task<QJsonObject> MessengerAPI::webappInit(const QString &botId, const QString &chatId) {
    return mapOrEmpty(get(messenger(u"/bots/%1/webapp-init?chat_id=%2", botId, chatId)));
}

QCoro::Task<void> MessengerAPI::submitMiniAppData(const QString &botId, const QString &chatId,
                                                  const QJsonObject &data) {
    return none(post(messenger(u"/miniapp/submit"),
                     {{u"bot_id"_s, botId}, {u"chat_id"_s, chatId}, {u"data"_s, data}}));
}

QCoro::Task<SkillCatalogue> MessengerAPI::listSkills() {
    return skillsOf(get(messenger(u"/skills")));
}

QCoro::Task<void> MessengerAPI::installSkill(const QString &chatId, const QString &skillId) {
    return none(post(messenger(u"/chats/%1/skills/%2", chatId, skillId), {}));
}

QCoro::Task<void> MessengerAPI::rateSkill(const QString &skillId, int rating) {
    return none(post(messenger(u"/skills/%1/rate", skillId), {{u"rating"_s, rating}}));
}

} // namespace orvane

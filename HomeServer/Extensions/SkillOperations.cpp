// SPDX-License-Identifier: MIT
#include "HomeServer/Extensions/SkillOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Extensions/Slug.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

#include <algorithm>
#include <array>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

struct AgentRole {
    QLatin1StringView key;
    QLatin1StringView name;
    const char16_t *description = nullptr;
};

constexpr std::array agentRoles = {
    AgentRole{"scribe"_L1, "Scribe"_L1, u"Записывает решения и задачи"},
    AgentRole{"moderator"_L1, "Moderator"_L1, u"Следит за порядком"},
    AgentRole{"assistant"_L1, "Assistant"_L1, u"Отвечает на вопросы"},
    AgentRole{"translator"_L1, "Translator"_L1, u"Переводит сообщения"},
    AgentRole{"scrum_master"_L1, "Scrum Master"_L1, u"Проводит стендап"},
};

const AgentRole *roleNamed(const QString &key) {
    const auto found =
        std::ranges::find_if(agentRoles, [&](const AgentRole &role) { return role.key == key; });
    return found == agentRoles.end() ? nullptr : &*found;
}

QJsonArray skillRecords(Database &database, qint64 userId, const QString &onlyThis = {}) {
    QJsonArray skills;
    Query rows(
        database,
        u"SELECT id, slug, name, description, category, icon, "
        "(SELECT count(*) FROM skill_installs i WHERE i.skill_id = s.id), "
        "(SELECT coalesce(avg(rating), 0) FROM skill_ratings r WHERE r.skill_id = s.id) FROM skills s "
        "WHERE (is_public = 1 OR owner_id = ?1) AND (?2 = '' OR id = ?2) ORDER BY created_at, s.rowid"_s,
        {userId, onlyThis});
    while (rows.next())
        skills.append(QJsonObject{{"id"_L1, rows.text(0)},
                                  {"slug"_L1, rows.text(1)},
                                  {"name"_L1, rows.text(2)},
                                  {"description"_L1, rows.text(3)},
                                  {"category"_L1, rows.text(4)},
                                  {"icon"_L1, rows.text(5)},
                                  {"install_count"_L1, rows.integer(6)},
                                  {"rating_avg"_L1, rows.number(7)}});
    return skills;
}

Answer listSkills(Call &call) {
    const QJsonArray skills = skillRecords(call.database(), call.caller.userId);
    QStringList categories;
    for (const QJsonValue skill : skills)
        categories.append(skill["category"_L1].toString());
    categories.removeDuplicates();
    categories.sort();
    return Answer({{"skills"_L1, skills}, {"categories"_L1, QJsonArray::fromStringList(categories)}});
}

bool isTaken(Database &database, const QString &slug) {
    return exists(database, u"SELECT 1 FROM skills WHERE slug = ?"_s, {slug});
}

QString chooseSlug(Call &call, const QString &name) {
    QString wanted = fields::textOrEmpty(call.body, "slug"_L1, 64);
    if (!wanted.isEmpty()) {
        if (isTaken(call.database(), wanted))
            throw Refusal(409, "slug_taken");
        return wanted;
    }
    const QString base = slugOf(name, u"skill"_s);
    QString slug = base;
    for (int number = 2; isTaken(call.database(), slug); ++number)
        slug = base + u'_' + QString::number(number);
    return slug;
}

Answer publishSkill(Call &call) {
    const QString id = newId();
    const QString name = fields::text(call.body, "name"_L1, 64);
    const QString category = fields::textOrEmpty(call.body, "category"_L1, 64);
    execute(
        call.database(),
        u"INSERT INTO skills(id, slug, owner_id, name, description, category, icon, system_prompt, triggers, "
        "is_public, created_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
        {id, chooseSlug(call, name), call.caller.userId, name,
         fields::textOrEmpty(call.body, "description"_L1, 4000), category.isEmpty() ? u"custom"_s : category,
         fields::textOrEmpty(call.body, "icon"_L1, 32), fields::text(call.body, "system_prompt"_L1, 20'000),
         fields::texts(call.body, "triggers"_L1, 50).join(u'\n'),
         fields::flag(call.body, "is_public"_L1, true), call.services.now()});
    return Answer({{"skill"_L1, skillRecords(call.database(), call.caller.userId, id).first()}}, 201);
}

void requireSkill(Call &call, const QString &id) {
    if (id.isEmpty() || skillRecords(call.database(), call.caller.userId, id).isEmpty())
        refuseNotFound();
}

Answer installSkill(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    requireSkill(call, call.part("skill"));
    execute(call.database(),
            u"INSERT INTO skill_installs(skill_id, chat_id) VALUES (?, ?) ON CONFLICT DO NOTHING"_s,
            {call.part("skill"), call.part("chat")});
    return Answer({{"status"_L1, "installed"_L1}});
}

Answer rateSkill(Call &call) {
    const qint64 rating = fields::integer(call.body, "rating"_L1);
    if (rating < 1 || rating > 5)
        refuseBadRequest();
    requireSkill(call, call.part("skill"));
    execute(call.database(),
            u"INSERT INTO skill_ratings(skill_id, user_id, rating) VALUES (?, ?, ?) "
            "ON CONFLICT DO UPDATE SET rating = excluded.rating"_s,
            {call.part("skill"), call.caller.userId, rating});
    return Answer({{"status"_L1, "rated"_L1}});
}

Answer listAgents(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    QJsonArray agents;
    Query rows(call.database(), u"SELECT id, role FROM agents WHERE chat_id = ? ORDER BY rowid"_s,
               {call.part("chat")});
    while (rows.next()) {
        const AgentRole *role = roleNamed(rows.text(1));
        agents.append(QJsonObject{{"id"_L1, rows.text(0)},
                                  {"role"_L1, rows.text(1)},
                                  {"name"_L1, role->name},
                                  {"description"_L1, QString::fromUtf16(role->description)}});
    }
    QJsonArray presets;
    for (const AgentRole &role : agentRoles)
        presets.append(role.key);
    return Answer({{"agents"_L1, agents}, {"presets"_L1, presets}});
}

Answer addAgent(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    const QString role = fields::text(call.body, "role"_L1);
    if (!roleNamed(role))
        refuseBadRequest();
    execute(call.database(),
            u"INSERT INTO agents(id, chat_id, role, created_at) VALUES (?, ?, ?, ?) ON CONFLICT DO NOTHING"_s,
            {newId(), call.part("chat"), role, call.services.now()});
    return Answer({{"status"_L1, "added"_L1}}, 201);
}

Answer removeAgent(Call &call) {
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    if (execute(call.database(), u"DELETE FROM agents WHERE chat_id = ? AND id = ?"_s,
                {call.part("chat"), call.part("agent")}) == 0)
        refuseNotFound();
    return Answer({{"status"_L1, "removed"_L1}});
}

} // namespace

void addSkills(Router &router) {
    router.add("GET", "skills", listSkills);
    router.add("POST", "skills", publishSkill);
    router.add("POST", "chats/{chat}/skills/{skill}", installSkill);
    router.add("POST", "skills/{skill}/rate", rateSkill);
    router.add("GET", "chats/{chat}/agents", listAgents);
    router.add("POST", "chats/{chat}/agents", addAgent);
    router.add("DELETE", "chats/{chat}/agents/{agent}", removeAgent);
}

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#include "ChatList/Organising/NewGroup.h"

#include "Base/Task.h"
#include "ChatList/Organising/ChatAnswer.h"
#include "Model/Words.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QStringList remoteIdsIn(const QString &text) {
    QStringList ids;
    for (const QString &piece : text.split(u',', Qt::SkipEmptyParts)) {
        const QString id = withoutBlanks(piece);
        if (id.startsWith(u'@') && id.contains(u':'))
            ids.append(id);
    }
    return ids;
}

} // namespace

NewGroup::NewGroup(MessengerSession &session, MessengerAPI &api, const EndToEnd *encryption)
    : m_session(session)
    , m_api(api)
    , m_encryption(encryption) {}

void NewGroup::toggleParticipant(const QString &userID) {
    QStringList participants = groupParticipants;
    if (participants.removeAll(userID) == 0)
        participants.append(userID);
    groupParticipants = participants;
}

void NewGroup::createGroup() {
    const Draft draft{groupName, groupParticipants, remoteIdsIn(groupRemoteMX), groupZkMode};
    showNewGroup = false;
    groupName = QString();
    groupParticipants = QStringList();
    groupRemoteMX = QString();
    groupZkMode = false;
    launch(create(shared_from_this(), draft));
}

QCoro::Task<void> NewGroup::create(Self self, Draft draft) {
    const std::optional<QJsonObject> answer = co_await dropped(self->request(draft), "no group appears");
    if (!answer)
        co_return;
    const auto chat = createdGroup(*answer, titleOf(draft), draft.participants);
    if (!chat)
        co_return;
    if (self->m_encryption && !chat->zkMode)
        dropped([&] { self->m_encryption->crypto().createGroupKey(chat->id, draft.participants); },
                "the run ends at whoever has no session, and the key stays");
    Q_EMIT self->created(*chat);
}

QCoro::Task<QJsonObject> NewGroup::request(const Draft &draft) {
    const QString title = titleOf(draft);
    if (!draft.remote.isEmpty())
        return m_api.createFederatedChat(title, draft.participants, draft.remote);
    if (draft.zeroKnowledge && m_encryption)
        return m_encryption->zkCrypto().createZkGroup(title, draft.participants, m_session.userIdText());
    return m_api.createChat(m_session.userIdText(), u"group"_s, title, draft.participants);
}

QString NewGroup::titleOf(const Draft &draft) {
    if (!draft.name.isEmpty())
        return draft.name;
    if (!draft.remote.isEmpty())
        return u"🌐 Federated Group"_s;
    return draft.zeroKnowledge ? u"ZK Group"_s : u"Group"_s;
}

} // namespace orvane

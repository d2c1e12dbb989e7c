#include "Model/MessengerChat.h"

#include <algorithm>

namespace orvane {

QString MessengerChat::displayName(const QString &myUserID, const Contacts &contacts) const {
    if (federated && title && !title->isEmpty())
        return QStringLiteral("🌐 ") + *title;
    if (zkMode)
        return title ? QStringLiteral("🔒 ") + *title : QStringLiteral("🔒 ZK Group");
    if (title)
        return *title;
    if (type == ChatType::direct) {
        const auto peer = contacts.constFind(peerId(myUserID));
        return peer == contacts.constEnd() ? QStringLiteral("?") : peer->displayName;
    }
    return QStringLiteral("G %1").arg(participants.size());
}

QString MessengerChat::visibleName(const QString &myUserID, const Contacts &contacts) const {
    const QString name = displayName(myUserID, contacts);
    const bool isVisible = std::any_of(name.cbegin(), name.cend(), [](QChar unit) {
        return unit.isSurrogate() || (unit.isPrint() && !unit.isSpace());
    });
    return isVisible ? name : QStringLiteral("Chat");
}

QString MessengerChat::hueId(const QString &myUserID) const {
    const QString peer = type == ChatType::direct ? peerId(myUserID) : QString();
    return peer.isEmpty() ? id : peer;
}

QString MessengerChat::peerId(const QString &myUserID) const {
    const auto peer = std::find_if(participants.cbegin(), participants.cend(),
                                   [&](const QString &participant) { return participant != myUserID; });
    return peer == participants.cend() ? QString() : *peer;
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Model/MessengerChat.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

QString MessengerChat::displayName(const QString &myUserID, const Contacts &contacts) const {
    if (federated && title && !title->isEmpty())
        return u"🌐 "_s + *title;
    if (zkMode)
        return title ? u"🔒 "_s + *title : u"🔒 ZK Group"_s;
    if (title)
        return *title;
    if (type == ChatType::direct)
        return nameOf(peerId(myUserID), contacts, u"?"_s);
    return u"G %1"_s.arg(participants.size());
}

QString MessengerChat::visibleName(const QString &myUserID, const Contacts &contacts) const {
    const QString name = displayName(myUserID, contacts);
    const bool isVisible = std::any_of(name.cbegin(), name.cend(), [](QChar unit) {
        return unit.isSurrogate() || (unit.isPrint() && !unit.isSpace());
    });
    return isVisible ? name : u"Chat"_s;
}

QString MessengerChat::hueId(const QString &myUserID) const {
    const QString peer = type == ChatType::direct ? peerId(myUserID) : QString();
    return peer.isEmpty() ? id : peer;
}

QString MessengerChat::symbol() const {
    if (type == ChatType::group)
        return u"person.3.fill"_s;
    return type == ChatType::channel ? u"megaphone.fill"_s : QString();
}

QString MessengerChat::peerId(const QString &myUserID) const {
    const auto peer = std::find_if(participants.cbegin(), participants.cend(),
                                   [&](const QString &participant) { return participant != myUserID; });
    return peer == participants.cend() ? QString() : *peer;
}

} // namespace orvane

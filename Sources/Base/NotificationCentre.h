// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

namespace orvane {

using namespace Qt::StringLiterals;

/// Carries announcements between parts of the process that don't know each other. Whoever listens picks by
/// name. Main thread.
class NotificationCentre : public QObject {
    Q_OBJECT

public:
    static NotificationCentre &shared();

    /// Everybody who listens has been told when the call returns.
    void post(const QString &name, const QJsonObject &userInfo) { Q_EMIT posted(name, userInfo); }

Q_SIGNALS:
    void posted(const QString &name, const QJsonObject &userInfo);
};

/// A chat is to be opened: `chat_id`.
inline const auto orvaneOpenChat = u"orvaneOpenChat"_s;
/// A message came directly over the local network: `peer_id`, `chat_id` and `message`, the record as it came.
inline const auto orvaneP2PMessage = u"orvaneP2PMessage"_s;

} // namespace orvane

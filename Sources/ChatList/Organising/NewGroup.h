// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Encryption/EndToEnd.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The form for a new group, which becomes one of three kinds: federated where remote people are named, else
/// zero-knowledge where that is chosen, else a plain one. Main thread.
class NewGroup : public QObject, public std::enable_shared_from_this<NewGroup> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Part of the chat list.")
    OBSERVABLE(bool, showNewGroup)
    OBSERVABLE(QString, groupName)
    OBSERVABLE(QStringList, groupParticipants)
    /// Federated ids ("@user:server") between commas; whatever else stands there doesn't count.
    OBSERVABLE(QString, groupRemoteMX)
    OBSERVABLE(bool, groupZkMode)
    /// Zero-knowledge groups are on offer.
    Q_PROPERTY(bool offersZk READ offersZk CONSTANT)

public:
    /// Without `encryption`, the end-to-end layer is off.
    NewGroup(MessengerSession &session, MessengerAPI &api, const EndToEnd *encryption);

    bool offersZk() const { return m_encryption != nullptr; }

    Q_INVOKABLE void toggleParticipant(const QString &userID);
    /// Closes the form and clears it at once. A failure is dropped: no group appears.
    Q_INVOKABLE void createGroup();

Q_SIGNALS:
    void created(const orvane::MessengerChat &chat);

private:
    struct Draft {
        QString name;
        QStringList participants;
        QStringList remote;
        bool zeroKnowledge = false;
    };
    using Self = std::shared_ptr<NewGroup>;
    static QCoro::Task<void> create(Self self, Draft draft);
    QCoro::Task<QJsonObject> request(const Draft &draft);
    static QString titleOf(const Draft &draft);

    MessengerSession &m_session;
    MessengerAPI &m_api;
    const EndToEnd *m_encryption;
};

} // namespace orvane

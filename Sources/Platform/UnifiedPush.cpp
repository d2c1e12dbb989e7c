// SPDX-License-Identifier: MIT
#include "Platform/UnifiedPush.h"

#include "Base/FreshId.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto application = u"com.orvanetalk.OrvaneTalk"_s;
const auto tokenKey = u"push/connector_token"_s;
const auto distributorPrefix = u"org.unifiedpush.Distributor."_s;

QDBusMessage busCall(const QString &method) {
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace

UnifiedPush::UnifiedPush(const QDBusConnection &bus, std::unique_ptr<UserDefaults> defaults)
    : m_bus(bus)
    , m_defaults(std::move(defaults)) {}

void UnifiedPush::registerForRemoteNotifications() {
    if (!m_bus.isConnected()) {
        Q_EMIT failed(u"There is no session bus."_s);
        return;
    }
    listNames(u"ListNames"_s, {});
}

void UnifiedPush::listNames(const QString &method, QStringList found) {
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(busCall(method)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, method, found] {
        const QDBusPendingReply<QStringList> reply = *answer;
        answer->deleteLater();
        QStringList distributors = found + reply.value().filter(distributorPrefix);
        if (method == "ListNames"_L1) {
            listNames(u"ListActivatableNames"_s, distributors);
            return;
        }
        distributors.sort();
        if (distributors.isEmpty())
            Q_EMIT failed(u"No push distributor is installed."_s);
        else
            registerAt(distributors.first());
    });
}

void UnifiedPush::registerAt(const QString &distributor) {
    // The distributor calls back under this name.
    m_bus.registerObject(u"/org/unifiedpush/Connector"_s, this, QDBusConnection::ExportAllSlots);
    m_bus.registerService(application);
    QDBusMessage call = QDBusMessage::createMethodCall(distributor, u"/org/unifiedpush/Distributor"_s,
                                                       u"org.unifiedpush.Distributor1"_s, u"Register"_s);
    call << application << connectorToken() << u"OrvaneTalk"_s;
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QString, QString> reply = *answer;
        answer->deleteLater();
        if (reply.isError())
            Q_EMIT failed(u"The push distributor did not answer."_s);
        else if (reply.argumentAt<0>() != "REGISTRATION_SUCCEEDED"_L1)
            Q_EMIT failed(u"The push distributor refused."_s);
    });
}

QString UnifiedPush::connectorToken() {
    QString token = m_defaults->text(tokenKey).value_or(QString());
    if (token.isEmpty()) {
        token = freshId();
        m_defaults->set(tokenKey, token);
    }
    return token;
}

void UnifiedPush::NewEndpoint(const QString &token, const QString &endpoint) {
    if (token == connectorToken() && !endpoint.isEmpty())
        Q_EMIT registered(endpoint.toUtf8());
}

void UnifiedPush::Message(const QString &token, const QByteArray &message, const QString &) {
    if (token == connectorToken())
        Q_EMIT received(message);
}

void UnifiedPush::Unregistered(const QString &token) {
    if (token == connectorToken())
        Q_EMIT failed(u"The push distributor ended the registration."_s);
}

} // namespace orvane

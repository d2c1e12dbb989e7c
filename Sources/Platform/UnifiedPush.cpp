#include "Platform/UnifiedPush.h"

#include "Base/FreshId.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace orvane {

namespace {

const auto application = QStringLiteral("com.orvanetalk.OrvaneTalk");
const auto tokenKey = QStringLiteral("push/connector_token");
const auto distributorPrefix = QStringLiteral("org.unifiedpush.Distributor.");

QDBusMessage busCall(const QString &method) {
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                          QStringLiteral("/org/freedesktop/DBus"),
                                          QStringLiteral("org.freedesktop.DBus"), method);
}

} // namespace

UnifiedPush::UnifiedPush(const QDBusConnection &bus, std::unique_ptr<UserDefaults> defaults)
    : m_bus(bus)
    , m_defaults(std::move(defaults)) {}

void UnifiedPush::registerForRemoteNotifications() {
    if (!m_bus.isConnected()) {
        Q_EMIT failed(QStringLiteral("There is no session bus."));
        return;
    }
    listNames(QStringLiteral("ListNames"), {});
}

void UnifiedPush::listNames(const QString &method, QStringList found) {
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(busCall(method)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, method, found] {
        const QDBusPendingReply<QStringList> reply = *answer;
        answer->deleteLater();
        QStringList distributors = found + reply.value().filter(distributorPrefix);
        if (method == QLatin1String("ListNames")) {
            listNames(QStringLiteral("ListActivatableNames"), distributors);
            return;
        }
        distributors.sort();
        if (distributors.isEmpty())
            Q_EMIT failed(QStringLiteral("No push distributor is installed."));
        else
            registerAt(distributors.first());
    });
}

void UnifiedPush::registerAt(const QString &distributor) {
    // The distributor calls back under this name.
    m_bus.registerObject(QStringLiteral("/org/unifiedpush/Connector"), this, QDBusConnection::ExportAllSlots);
    m_bus.registerService(application);
    QDBusMessage call = QDBusMessage::createMethodCall(
        distributor, QStringLiteral("/org/unifiedpush/Distributor"),
        QStringLiteral("org.unifiedpush.Distributor1"), QStringLiteral("Register"));
    call << application << connectorToken() << QStringLiteral("OrvaneTalk");
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QString, QString> reply = *answer;
        answer->deleteLater();
        if (reply.isError())
            Q_EMIT failed(QStringLiteral("The push distributor did not answer."));
        else if (reply.argumentAt<0>() != QLatin1String("REGISTRATION_SUCCEEDED"))
            Q_EMIT failed(QStringLiteral("The push distributor refused."));
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
        Q_EMIT failed(QStringLiteral("The push distributor ended the registration."));
}

} // namespace orvane

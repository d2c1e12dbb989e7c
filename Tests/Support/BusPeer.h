// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>

#include <functional>

namespace orvane {

/// Another program on the session bus: it notes what it is called and told, and says what a test wants.
class BusPeer : public QDBusVirtualObject {
    Q_OBJECT

public:
    /// Objects at `path` and below, and then these names.
    explicit BusPeer(const QString &path = "/peer", const QStringList &names = {})
        : m_path(path) {
        m_bus.registerVirtualObject(m_path, this, QDBusConnection::SubPath);
        for (const QString &name : names)
            own(name);
    }
    ~BusPeer() override {
        // What has arrived and was not yet handled refers to the connection.
        m_bus.unregisterObject(m_path, QDBusConnection::UnregisterTree);
        QCoreApplication::removePostedEvents(this);
        QDBusConnection::disconnectFromBus(m_bus.name());
    }

    /// What a call is answered with, by nothing where that is no valid message. Without it: with no value.
    std::function<QDBusMessage(const QDBusMessage &call)> answer;
    /// The calls, and the signals that it listens for, in the order of their arrival.
    QList<QDBusMessage> heard;

    /// One name more.
    void own(const QString &name) { m_bus.registerService(name); }
    /// Listens for a signal, of whoever says it where `service` is empty.
    void listen(const QString &service, const QString &path, const QString &interface,
                const QString &signal) {
        m_bus.connect(service, path, interface, signal, this, SLOT(note(QDBusMessage)));
    }
    /// Says a signal of its own object.
    void tell(const QString &interface, const QString &signal, const QVariantList &arguments = {}) {
        QDBusMessage message = QDBusMessage::createSignal(m_path, interface, signal);
        message.setArguments(arguments);
        m_bus.send(message);
    }
    QDBusPendingCall call(const QString &service, const QString &path, const QString &interface,
                          const QString &method, const QVariantList &arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return m_bus.asyncCall(message);
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &) override {
        note(call);
        const QDBusMessage reply = answer ? answer(call) : call.createReply();
        if (reply.type() != QDBusMessage::InvalidMessage)
            m_bus.send(reply);
        return true;
    }

private Q_SLOTS:
    void note(const QDBusMessage &message) { heard.append(message); }

private:
    static inline int s_count = 0;
    QString m_path;
    QDBusConnection m_bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, "peer " + QString::number(++s_count));
};

} // namespace orvane

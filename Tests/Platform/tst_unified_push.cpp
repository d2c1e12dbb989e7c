// SPDX-License-Identifier: MIT
#include "Platform/UnifiedPush.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusMessage>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

class Distributor : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.unifiedpush.Distributor1")

public:
    explicit Distributor(const QString &name)
        : m_name(name)
        , m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)) {
        m_bus.registerObject(u"/org/unifiedpush/Distributor"_s, this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(u"org.unifiedpush.Distributor."_s + name);
    }
    ~Distributor() override { QDBusConnection::disconnectFromBus(m_name); }

    void tell(const QString &method, const QVariantList &arguments) {
        QDBusMessage call = QDBusMessage::createMethodCall(application, u"/org/unifiedpush/Connector"_s,
                                                           u"org.unifiedpush.Connector1"_s, method);
        call.setArguments(arguments);
        m_bus.send(call);
    }

    QString application;
    QString token;
    int registrations = 0;
    QString result = u"REGISTRATION_SUCCEEDED"_s;

public Q_SLOTS:
    QString Register(const QString &service, const QString &givenToken, const QString &, QString &reason) {
        application = service;
        token = givenToken;
        ++registrations;
        reason = u"why not"_s;
        return result;
    }

private:
    QString m_name;
    QDBusConnection m_bus;
};

struct Heard {
    explicit Heard(UnifiedPush &push)
        : registered(&push, &RemoteNotifications::registered)
        , failed(&push, &RemoteNotifications::failed)
        , received(&push, &RemoteNotifications::received) {}
    QSignalSpy registered, failed, received;
};

} // namespace

class TestUnifiedPush : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }
    void theEndpointIsTheToken();
    void theFirstDistributorByNameIsTaken();
    void failuresAreTold();
    void theTokenSurvivesARestart();

private:
    SessionBus m_bus;
};

void TestUnifiedPush::theEndpointIsTheToken() {
    Distributor distributor(u"one"_s);
    UnifiedPush push;
    Heard heard(push);
    push.registerForRemoteNotifications();
    QTRY_COMPARE(distributor.registrations, 1);
    QCOMPARE(distributor.application, u"com.orvanetalk.OrvaneTalk"_s);
    QVERIFY(!distributor.token.isEmpty());
    // What isn't for this installation is dropped; the order of the calls is kept by the bus.
    distributor.tell(u"NewEndpoint"_s, {u"another"_s, u"https://push.example/wrong"_s});
    distributor.tell(u"NewEndpoint"_s, {distributor.token, QString()});
    distributor.tell(u"NewEndpoint"_s, {distributor.token, 7});
    distributor.tell(u"Message"_s, {u"another"_s, QByteArray("{}"), QString()});
    distributor.tell(u"NewEndpoint"_s, {distributor.token, u"https://push.example/ü"_s});
    distributor.tell(u"Message"_s, {distributor.token, QByteArray("\0{\xff", 3), QString()});
    distributor.tell(u"Unregistered"_s, {u"another"_s});
    distributor.tell(u"Unregistered"_s, {distributor.token});
    QTRY_COMPARE(heard.failed.size(), 1);
    QCOMPARE(heard.registered.size(), 1);
    QCOMPARE(heard.registered.first().first().toByteArray(), QByteArray("https://push.example/ü"));
    QCOMPARE(heard.received.size(), 1);
    QCOMPARE(heard.received.first().first().toByteArray(), QByteArray("\0{\xff", 3));
}

void TestUnifiedPush::theFirstDistributorByNameIsTaken() {
    Distributor second(u"b"_s);
    Distributor first(u"a"_s);
    UnifiedPush push;
    push.registerForRemoteNotifications();
    QTRY_COMPARE(first.registrations, 1);
    QCOMPARE(second.registrations, 0);
}

void TestUnifiedPush::failuresAreTold() {
    UnifiedPush push;
    Heard heard(push);
    push.registerForRemoteNotifications();
    QTRY_COMPARE(heard.failed.size(), 1);
    QCOMPARE(heard.failed.last().first().toString(), u"No push distributor is installed."_s);

    Distributor refusing(u"r"_s);
    refusing.result = u"REGISTRATION_FAILED"_s;
    push.registerForRemoteNotifications();
    QTRY_COMPARE(heard.failed.size(), 2);
    QCOMPARE(heard.failed.last().first().toString(), u"The push distributor refused."_s);

    UnifiedPush offline(QDBusConnection(u"no bus"_s));
    Heard heardOffline(offline);
    offline.registerForRemoteNotifications();
    QCOMPARE(heardOffline.failed.size(), 1);
    QCOMPARE(heard.registered.size(), 0);
}

void TestUnifiedPush::theTokenSurvivesARestart() {
    Distributor distributor(u"one"_s);
    QStringList tokens;
    for (int start = 0; start < 2; ++start) {
        UnifiedPush push;
        push.registerForRemoteNotifications();
        QTRY_COMPARE(distributor.registrations, start + 1);
        tokens.append(distributor.token);
    }
    QCOMPARE(tokens.at(0), tokens.at(1));
}

ORVANE_TEST_MAIN(TestUnifiedPush)
#include "tst_unified_push.moc"

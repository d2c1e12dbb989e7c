// SPDX-License-Identifier: MIT
#include "Platform/DesktopNotifications.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusContext>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

// A notification service that notes what it is sent.
class Recorder : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    explicit Recorder(const QStringList &capabilities)
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"recorder"_s))
        , m_capabilities(capabilities) {
        m_bus.registerObject(u"/org/freedesktop/Notifications"_s, this,
                             QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        m_bus.registerService(u"org.freedesktop.Notifications"_s);
    }
    ~Recorder() override { QDBusConnection::disconnectFromBus(u"recorder"_s); }

    struct Shown {
        QString application, icon, summary, body;
        uint replaces = 0;
        QStringList actions;
        QVariantMap hints;
    };
    QList<Shown> shown;
    int asked = 0;

public Q_SLOTS:
    QStringList GetCapabilities() {
        ++asked;
        return m_capabilities;
    }
    uint Notify(const QString &application, uint replaces, const QString &icon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int) {
        shown.append({application, icon, summary, body, replaces, actions, hints});
        return uint(shown.size());
    }

Q_SIGNALS:
    void ActionInvoked(uint id, const QString &action);
    void NotificationClosed(uint id, uint reason);
    void ActivationToken(uint id, const QString &token);

private:
    QDBusConnection m_bus;
    QStringList m_capabilities;
};

NotificationContent content(const QString &title, const QString &subtitle, const QString &body) {
    return {title, subtitle, body, {{u"chat_id"_s, u"3"_s}}};
}

} // namespace

class TestDesktopNotifications : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }
    void bodies_data();
    void bodies();
    void twoAtOnceAreTwoNotifications();
    void activationNamesTheChat();
    void aServiceThatComesBackIsAskedAnew();
    void withoutAServiceNothingHappens();

private:
    SessionBus m_bus;
};

void TestDesktopNotifications::bodies_data() {
    QTest::addColumn<QString>("subtitle");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("markup");
    QTest::addColumn<QString>("body");
    QTest::newRow("a group") << u"Team"_s << u"hi"_s << true << u"Team\nhi"_s;
    QTest::newRow("a direct chat") << u"Ben"_s << u"hi"_s << true << u"hi"_s;
    QTest::newRow("markup, read as such")
        << u"<i>"_s << u"<a href=\"x\">&\"</a>"_s << true
        << u"&lt;i&gt;\n&lt;a href=&quot;x&quot;&gt;&amp;&quot;&lt;/a&gt;"_s;
    QTest::newRow("markup, taken as it is") << QString() << u"<b>&amp;</b>"_s << false << u"<b>&amp;</b>"_s;
    QTest::newRow("control characters")
        << QString() << u"a\0b\x1b[31m\r\nc\td\u0085"_s << false << u"ab[31m\ncd"_s;
    QTest::newRow("right to left") << u"קבוצה"_s << u"שלום 👋🏽"_s << true
                                   << u"קבוצה\nשלום 👋🏽"_s;
    QTest::newRow("a megabyte") << QString() << QString(1'000'000, u'x') << true
                                << QString(1000, u'x') + u'…';
    QTest::newRow("a pair at the cut")
        << QString() << QString(999, u'x') + u"👍👍"_s << true << QString(999, u'x') + u"👍…"_s;
}

void TestDesktopNotifications::bodies() {
    QFETCH(QString, subtitle);
    QFETCH(QString, text);
    QFETCH(bool, markup);
    QFETCH(QString, body);
    Recorder recorder(markup ? QStringList{u"body-markup"_s} : QStringList{});
    DesktopNotifications notifications;
    notifications.add(u"id"_s, content(u"Ben"_s, subtitle, text));
    QTRY_COMPARE(recorder.shown.size(), 1);
    const Recorder::Shown &shown = recorder.shown.first();
    QCOMPARE(shown.body, body);
    QCOMPARE(shown.summary, u"Ben"_s);
    QCOMPARE(shown.application, u"OrvaneTalk"_s);
    QCOMPARE(shown.icon, u"com.orvanetalk.OrvaneTalk"_s);
    QCOMPARE(shown.hints.value(u"desktop-entry"_s), u"com.orvanetalk.OrvaneTalk"_s);
    QCOMPARE(shown.hints.value(u"sound-name"_s), u"message-new-instant"_s);
    QCOMPARE(shown.actions, (QStringList{u"default"_s, u"Open"_s}));
}

void TestDesktopNotifications::twoAtOnceAreTwoNotifications() {
    Recorder recorder({});
    DesktopNotifications notifications;
    notifications.add(u"a"_s, content(u"Ben"_s, {}, u"1"_s));
    notifications.add(u"a"_s, content(u"Ben"_s, {}, u"2"_s));
    QTRY_COMPARE(recorder.shown.size(), 2);
    QCOMPARE(recorder.asked, 1);
    QCOMPARE(recorder.shown.at(0).body, u"1"_s);
    QCOMPARE(recorder.shown.at(0).replaces + recorder.shown.at(1).replaces, 0u);
}

void TestDesktopNotifications::activationNamesTheChat() {
    Recorder recorder({});
    NotificationCentre centre;
    QSignalSpy posted(&centre, &NotificationCentre::posted);
    DesktopNotifications notifications(QDBusConnection::sessionBus(), centre);
    notifications.add(u"a"_s, content(u"Ben"_s, {}, u"1"_s));
    notifications.add(u"b"_s, content(u"Ben"_s, {}, u"2"_s));
    QTRY_COMPARE(recorder.shown.size(), 2);
    // Somebody else's notification, another action, one that is gone, and then the one.
    Q_EMIT recorder.ActionInvoked(99, u"default"_s);
    Q_EMIT recorder.ActionInvoked(1, u"other"_s);
    Q_EMIT recorder.NotificationClosed(2, 1);
    Q_EMIT recorder.ActionInvoked(2, u"default"_s);
    Q_EMIT recorder.ActivationToken(1, u"tok"_s);
    Q_EMIT recorder.ActionInvoked(1, u"default"_s);
    QTRY_COMPARE(posted.size(), 1);
    QCOMPARE(posted.first().at(0).toString(), orvaneOpenChat);
    QCOMPARE(posted.first().at(1).toJsonObject(), (QJsonObject{{u"chat_id"_s, u"3"_s}}));
    QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("tok"));
}

void TestDesktopNotifications::aServiceThatComesBackIsAskedAnew() {
    DesktopNotifications notifications;
    {
        Recorder plain({});
        notifications.add(u"a"_s, content(u"Ben"_s, {}, u"<1>"_s));
        QTRY_COMPARE(plain.shown.size(), 1);
    }
    Recorder other({u"body-markup"_s});
    // Until the bus has told that the owner is another one, the old one's way of writing is used.
    const auto shownAnew = [&] {
        notifications.add(u"b"_s, content(u"Ben"_s, {}, u"<2>"_s));
        return !other.shown.isEmpty() && other.shown.last().body == u"&lt;2&gt;"_s;
    };
    QTRY_VERIFY(shownAnew());
}

void TestDesktopNotifications::withoutAServiceNothingHappens() {
    NotificationCentre centre;
    DesktopNotifications notifications(QDBusConnection::sessionBus(), centre);
    DesktopNotifications offline(QDBusConnection(u"no bus"_s), centre);
    for (int index = 0; index < 1000; ++index) {
        notifications.add(u"a"_s, content(u"Ben"_s, {}, u"1"_s));
        offline.add(u"a"_s, content(u"Ben"_s, {}, u"1"_s));
    }
    Recorder recorder({});
    const auto shown = [&] {
        notifications.add(u"a"_s, content(u"Ben"_s, {}, u"2"_s));
        return !recorder.shown.isEmpty();
    };
    QTRY_VERIFY(shown());
    QCOMPARE(recorder.shown.first().body, u"2"_s);
}

ORVANE_TEST_MAIN(TestDesktopNotifications)
#include "tst_desktop_notifications.moc"

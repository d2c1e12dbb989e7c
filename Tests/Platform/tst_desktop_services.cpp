// SPDX-License-Identifier: MIT
#include "Platform/DesktopNotifications.h"
#include "Platform/ReducedMotion.h"
#include "Platform/UnifiedPush.h"
#include "Support/BusPeer.h"
#include "Support/InRow.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;
using Groups = QMap<QString, QVariantMap>;

namespace {

const auto notifications = u"org.freedesktop.Notifications"_s;

// A notification service that numbers what it shows from 1.
struct Service : BusPeer {
    explicit Service(const QStringList &capabilities = {})
        : BusPeer("/org/freedesktop/Notifications", {notifications}) {
        answer = [this, capabilities](const QDBusMessage &call) {
            if (call.member() == "GetCapabilities") {
                ++asked;
                return call.createReply(capabilities);
            }
            shown.append(call.arguments());
            return call.createReply(uint(shown.size()));
        };
    }

    int asked = 0;
    /// application, replaces, icon, summary, body, actions, hints, time
    QList<QVariantList> shown;
    QVariant body(qsizetype index) const { return shown.at(index).value(4); }
};

NotificationContent content(const QString &body, const QString &subtitle = {}) {
    return {"Ben", subtitle, body, {{"chat_id", "3"}}};
}

struct Distributor : BusPeer {
    explicit Distributor(const QString &name, const QString &result = "REGISTRATION_SUCCEEDED")
        : BusPeer("/org/unifiedpush/Distributor", {"org.unifiedpush.Distributor." + name}) {
        answer = [result](const QDBusMessage &call) {
            return call.createReply(QVariantList{result, "why not"});
        };
    }

    /// What was given at the last registration.
    QString application() const { return heard.last().arguments().value(0).toString(); }
    QString token() const { return heard.last().arguments().value(1).toString(); }

    void order(const QString &method, const QVariantList &arguments) {
        call("com.orvanetalk.OrvaneTalk", "/org/unifiedpush/Connector", "org.unifiedpush.Connector1", method,
             arguments);
    }
};

struct Told {
    explicit Told(UnifiedPush &push)
        : registered(&push, &RemoteNotifications::registered)
        , failed(&push, &RemoteNotifications::failed)
        , received(&push, &RemoteNotifications::received) {}
    QSignalSpy registered, failed, received;
};

const auto gnome = u"org.gnome.desktop.interface"_s;
const auto plasma = u"org.kde.kdeglobals.KDE"_s;
const auto appearance = u"org.freedesktop.appearance"_s;
const auto service = u"org.freedesktop.portal.Desktop"_s;
const auto path = u"/org/freedesktop/portal/desktop"_s;
const auto interface = u"org.freedesktop.portal.Settings"_s;

/// The settings of a desktop's portal.
struct Portal : BusPeer {
    explicit Portal(const Groups &groups = {})
        : BusPeer(path, {service}) {
        answer = [groups](const QDBusMessage &call) { return call.createReply(QVariant::fromValue(groups)); };
    }

    void change(const QString &group, const QString &key, const QVariant &value) {
        tell(interface, "SettingChanged", {group, key, QVariant::fromValue(QDBusVariant(value))});
    }
};

/// Whatever the portal was asked before, and said since, has arrived.
void settle() {
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(
        QDBusMessage::createMethodCall(service, path, interface, "Nothing")));
    QVERIFY(QSignalSpy(&watcher, &QDBusPendingCallWatcher::finished).wait());
}

} // namespace

// Against services that stand on a bus of their own.
class TestDesktopServices : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_bus.start());
        qDBusRegisterMetaType<Groups>();
    }

    void bodies() {
        const auto check = [](const char *name, const NotificationContent &given, bool markup,
                              const QString &body) {
            IN_ROW(name);
            const Service service(markup ? QStringList{"body-markup"} : QStringList());
            DesktopNotifications notifications;
            notifications.add("id", given);
            QTRY_COMPARE(service.shown.size(), 1);
            const QVariantList shown = service.shown.first();
            QCOMPARE(shown.mid(0, 6), (QVariantList{"OrvaneTalk", 0U, "com.orvanetalk.OrvaneTalk", "Ben",
                                                    body, QStringList{"default", "Open"}}));
            const auto hints = qdbus_cast<QVariantMap>(shown.at(6));
            QCOMPARE(hints.value("desktop-entry"), "com.orvanetalk.OrvaneTalk");
            QCOMPARE(hints.value("sound-name"), "message-new-instant");
        };
        check("a group", content("hi", "Team"), true, "Team\nhi");
        check("a direct chat", content("hi", "Ben"), true, "hi");
        check("markup, read as such", content("<a href=\"x\">&\"</a>", "<i>"), true,
              "&lt;i&gt;\n&lt;a href=&quot;x&quot;&gt;&amp;&quot;&lt;/a&gt;");
        check("markup, taken as it is", content("<b>&amp;</b>"), false, "<b>&amp;</b>");
        check("control characters", content(u"a\0b\x1b[31m\r\nc\td\u0085"_s), false, "ab[31m\ncd");
        check("right to left", content("שלום 👋🏽", "קבוצה"), true, "קבוצה\nשלום 👋🏽");
        check("a megabyte", content(QString(1'000'000, u'x')), true, QString(1000, u'x') + u'…');
        check("a pair at the cut", content(QString(999, u'x') + "👍👍"), true, QString(999, u'x') + "👍…");
    }

    void twoAtOnceAreTwoNotifications() {
        const Service service;
        DesktopNotifications notifications;
        notifications.add("a", content("1"));
        notifications.add("a", content("2"));
        QTRY_COMPARE(service.shown.size(), 2);
        QCOMPARE(service.asked, 1);
        QCOMPARE(service.body(0), "1");
        QCOMPARE(service.shown.at(1).at(1), 0U);
    }

    void activationNamesTheChat() {
        Service service;
        NotificationCentre centre;
        QSignalSpy posted(&centre, &NotificationCentre::posted);
        DesktopNotifications notifications(QDBusConnection::sessionBus(), centre);
        notifications.add("a", content("1"));
        notifications.add("b", content("2"));
        QTRY_COMPARE(service.shown.size(), 2);
        // Somebody else's notification, another action, one that is gone, and then the one.
        service.tell(::notifications, "ActionInvoked", {99U, "default"});
        service.tell(::notifications, "ActionInvoked", {1U, "other"});
        service.tell(::notifications, "NotificationClosed", {2U, 1U});
        service.tell(::notifications, "ActionInvoked", {2U, "default"});
        service.tell(::notifications, "ActivationToken", {1U, "tok"});
        service.tell(::notifications, "ActionInvoked", {1U, "default"});
        QTRY_COMPARE(posted.size(), 1);
        QCOMPARE(posted.first().at(0).toString(), orvaneOpenChat);
        QCOMPARE(posted.first().at(1).toJsonObject(), (QJsonObject{{"chat_id", "3"}}));
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "tok");
    }

    void aServiceThatComesBackIsAskedAnew() {
        DesktopNotifications notifications;
        {
            const Service plain;
            notifications.add("a", content("<1>"));
            QTRY_COMPARE(plain.shown.size(), 1);
        }
        const Service other({"body-markup"});
        // Until the bus has told that the owner is another one, the old one's way of writing is used.
        const auto shownAnew = [&] {
            notifications.add("b", content("<2>"));
            return !other.shown.isEmpty() && other.body(other.shown.size() - 1) == "&lt;2&gt;";
        };
        QTRY_VERIFY(shownAnew());
    }

    void withoutAServiceNothingHappens() {
        NotificationCentre centre;
        DesktopNotifications notifications(QDBusConnection::sessionBus(), centre);
        DesktopNotifications offline(QDBusConnection("no bus"), centre);
        for (int index = 0; index < 1000; ++index) {
            notifications.add("a", content("1"));
            offline.add("a", content("1"));
        }
        const Service service;
        const auto shown = [&] {
            notifications.add("a", content("2"));
            return !service.shown.isEmpty();
        };
        QTRY_VERIFY(shown());
        QCOMPARE(service.body(0), "2");
    }

    void theEndpointIsTheToken() {
        Distributor distributor("one");
        UnifiedPush push;
        const Told told(push);
        push.registerForRemoteNotifications();
        QTRY_COMPARE(distributor.heard.size(), 1);
        QCOMPARE(distributor.application(), "com.orvanetalk.OrvaneTalk");
        const QString token = distributor.token();
        QVERIFY(!token.isEmpty());
        // What isn't for this installation is dropped; the order of the calls is kept by the bus.
        distributor.order("NewEndpoint", {"another", "https://push.example/wrong"});
        distributor.order("NewEndpoint", {token, QString()});
        distributor.order("NewEndpoint", {token, 7});
        distributor.order("Message", {"another", QByteArray("{}"), QString()});
        distributor.order("NewEndpoint", {token, "https://push.example/ü"});
        distributor.order("Message", {token, QByteArray("\0{\xff", 3), QString()});
        distributor.order("Unregistered", {"another"});
        distributor.order("Unregistered", {token});
        QTRY_COMPARE(told.failed.size(), 1);
        QCOMPARE(told.registered, (QList<QVariantList>{{QByteArray("https://push.example/ü")}}));
        QCOMPARE(told.received, (QList<QVariantList>{{QByteArray("\0{\xff", 3)}}));
    }

    void theFirstDistributorByNameIsTaken() {
        const Distributor second("b");
        const Distributor first("a");
        UnifiedPush push;
        push.registerForRemoteNotifications();
        QTRY_COMPARE(first.heard.size(), 1);
        QCOMPARE(second.heard.size(), 0);
    }

    void failuresAreTold() {
        UnifiedPush push;
        const Told told(push);
        push.registerForRemoteNotifications();
        QTRY_COMPARE(told.failed.size(), 1);
        QCOMPARE(told.failed.last(), QVariantList{"No push distributor is installed."});

        const Distributor refusing("r", "REGISTRATION_FAILED");
        push.registerForRemoteNotifications();
        QTRY_COMPARE(told.failed.size(), 2);
        QCOMPARE(told.failed.last(), QVariantList{"The push distributor refused."});
        QCOMPARE(told.registered.size(), 0);

        UnifiedPush offline{QDBusConnection("no bus")};
        const Told toldOffline(offline);
        offline.registerForRemoteNotifications();
        QCOMPARE(toldOffline.failed.size(), 1);
    }

    void theTokenSurvivesARestart() {
        const Distributor distributor("one");
        QStringList tokens;
        for (int start = 1; start <= 2; ++start) {
            UnifiedPush push;
            push.registerForRemoteNotifications();
            QTRY_COMPARE(distributor.heard.size(), start);
            tokens.append(distributor.token());
        }
        QCOMPARE(tokens.at(0), tokens.at(1));
    }

    void theDesktopIsAskedAtTheStart() {
        const auto check = [](const char *name, const QString &group, const QString &key,
                              const QVariant &value, bool wanted) {
            IN_ROW(name);
            const Portal portal({{group, {{key, value}}}});
            const ReducedMotion motion;
            QVERIFY(!motion.isWanted());
            settle();
            QCOMPARE(portal.heard.first().arguments().value(0).toStringList().size(), 3);
            QCOMPARE(motion.isWanted(), wanted);
        };
        check("freedesktop, yes", appearance, "reduced-motion", 1U, true);
        check("freedesktop, no", appearance, "reduced-motion", 0U, false);
        check("freedesktop, unknown number", appearance, "reduced-motion", 7U, false);
        check("GNOME, off", gnome, "enable-animations", false, true);
        check("GNOME, on", gnome, "enable-animations", true, false);
        check("GNOME, text", gnome, "enable-animations", "false", false);
        check("Plasma, none", plasma, "AnimationDurationFactor", "0", true);
        check("Plasma, half", plasma, "AnimationDurationFactor", "0.5", false);
        check("Plasma, no number", plasma, "AnimationDurationFactor", "slow", false);
        check("another key", gnome, "color-scheme", "x", false);
    }

    void aChangeIsHeardOnce() {
        Portal portal;
        ReducedMotion motion;
        QSignalSpy changed(&motion, &ReducedMotion::changed);
        settle();
        portal.change(gnome, "enable-animations", false);
        portal.change(gnome, "enable-animations", false);
        portal.change(appearance, "reduced-motion", 1U);
        // Two ask; one that takes it back is not enough.
        portal.change(gnome, "enable-animations", true);
        settle();
        QVERIFY(motion.isWanted());
        QCOMPARE(changed.size(), 1);
        portal.change(appearance, "reduced-motion", 0U);
        settle();
        QVERIFY(!motion.isWanted());
        QCOMPARE(changed.size(), 2);
    }

    void withoutAPortalNothingIsReduced() {
        const ReducedMotion motion;
        // One that comes later is heard.
        Portal portal;
        portal.change(appearance, "reduced-motion", 1U);
        settle();
        QVERIFY(motion.isWanted());
        const ReducedMotion offline(QDBusConnection("no bus"));
        QVERIFY(!offline.isWanted());
    }

private:
    SessionBus m_bus;
};

ORVANE_TEST_MAIN(TestDesktopServices)
#include "tst_desktop_services.moc"

// SPDX-License-Identifier: MIT
#include "Platform/LauncherBadge.h"
#include "Platform/TrayIcon.h"
#include "Support/BusPeer.h"
#include "Support/InRow.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QSignalSpy>

#include <climits>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const auto itemPath = u"/StatusNotifierItem"_s;
const auto itemInterface = u"org.kde.StatusNotifierItem"_s;
const auto properties = u"org.freedesktop.DBus.Properties"_s;

QString ownName() {
    return QDBusConnection::sessionBus().baseService();
}

// A dock that notes what it is told.
struct Dock : BusPeer {
    Dock() {
        listen({}, "/com/orvanetalk/OrvaneTalk", "com.canonical.Unity.LauncherEntry", "Update");
        own("com.canonical.Unity");
    }

    QVariantMap last() const {
        return heard.isEmpty() ? QVariantMap() : qdbus_cast<QVariantMap>(heard.last().arguments().at(1));
    }
};

// A tray's watcher, as it should be or not: one that says something else, says no, or says nothing.
struct Watcher : BusPeer {
    explicit Watcher(const QVariant &says = true,
                     QDBusMessage::MessageType manner = QDBusMessage::ReplyMessage)
        : BusPeer("/StatusNotifierWatcher", {"org.kde.StatusNotifierWatcher"})
        , hasHost(says) {
        answer = [this, manner](const QDBusMessage &call) {
            if (manner == QDBusMessage::ErrorMessage)
                return call.createErrorReply(QDBusError::AccessDenied, "no");
            if (manner != QDBusMessage::ReplyMessage)
                return QDBusMessage();
            return call.member() == "Get" ? call.createReply(QVariant::fromValue(QDBusVariant(hasHost)))
                                          : call.createReply();
        };
    }

    QVariant hasHost;

    bool wasTold(const QString &item) const {
        return std::any_of(heard.begin(), heard.end(), [&](const QDBusMessage &call) {
            return call.member() == "RegisterStatusNotifierItem" && call.arguments().value(0) == item;
        });
    }
    void host(bool there) {
        hasHost = there;
        tell("org.kde.StatusNotifierWatcher",
             there ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered");
    }
};

QImage drawn(const QString &label, int side) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(label.isEmpty() ? 0x80112233U : 0xff445566U);
    return image;
}

// What a host on the bus is answered.
struct Host : BusPeer {
    Host() {
        for (const char *signal : {"NewIcon", "NewToolTip"})
            listen(ownName(), itemPath, itemInterface, signal);
    }

    QDBusMessage ask(const QString &path, const QString &interface, const QString &method,
                     const QVariantList &arguments) {
        const QDBusPendingCall pending = call(ownName(), path, interface, method, arguments);
        return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.reply() : QDBusMessage();
    }
    QDBusMessage menu(const QString &method, const QVariantList &arguments) {
        return ask("/MenuBar", "com.canonical.dbusmenu", method, arguments);
    }
    QDBusMessage event(const QVariant &entry, const QString &kind) {
        return menu("Event", {entry, kind, QVariant::fromValue(QDBusVariant(0)), 0U});
    }
    QVariantMap item() {
        return qdbus_cast<QVariantMap>(
            ask(itemPath, properties, "GetAll", {itemInterface}).arguments().value(0));
    }
    QStringList signalsHeard() const {
        QStringList names;
        for (const QDBusMessage &signal : heard)
            names.append(signal.member());
        return names;
    }
};

} // namespace

class TestDockBadge : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }

    void badges() {
        const auto check = [](qint64 count, const QString &label, const QString &toolTip, const char *pixel) {
            IN_ROW(label.toUtf8());
            const Dock dock;
            LauncherBadge launcher;
            launcher.show(7, "7");
            launcher.show(count, label);
            QTRY_COMPARE(dock.last().value("count"), count);
            QCOMPARE(dock.last().value("count-visible"), count > 0);
            QCOMPARE(dock.heard.last().arguments().at(0), "application://com.orvanetalk.OrvaneTalk.desktop");

            Host host;
            TrayIcon tray(drawn);
            tray.show(7, "7");
            tray.show(count, label);
            const QVariantMap item = host.item();
            QCOMPARE(item.value("Id"), "com.orvanetalk.OrvaneTalk");
            QCOMPARE(item.value("Status"), "Active");
            QCOMPARE(item.value("Category"), "Communications");
            QCOMPARE(item.value("Menu").value<QDBusObjectPath>().path(), "/MenuBar");
            const auto icon = item.value("IconPixmap").value<QDBusArgument>();
            QCOMPARE(icon.currentSignature(), "a(iiay)");
            const auto icons = qdbus_cast<IconPixmaps>(icon);
            QCOMPARE(icons.size(), 3);
            for (const IconPixmap &each : icons)
                QCOMPARE(each.pixels, QByteArray::fromHex(pixel).repeated(each.width * each.height));
            const auto shown = item.value("ToolTip").value<QDBusArgument>();
            QCOMPARE(shown.currentSignature(), "(sa(iiay)ss)");
            QCOMPARE(qdbus_cast<TrayToolTip>(shown).text, toolTip);
        };
        check(0, "", "", "80112233");
        check(1, "1", "1 unread", "ff445566");
        check(5'000'000'000, "99+", "5000000000 unread", "ff445566");
    }

    void aDockThatComesLaterIsTold() {
        LauncherBadge launcher;
        launcher.show(3, "3");
        const Dock dock;
        QTRY_COMPARE(dock.last().value("count"), 3);
    }

    void hostsHearOfWhatChanges() {
        const Host host;
        TrayIcon tray(drawn);
        tray.show(100, "99+");
        tray.show(101, "99+");
        tray.show(101, "99+");
        tray.show(0, {});
        QTRY_COMPARE(host.signalsHeard(),
                     (QStringList{"NewToolTip", "NewIcon", "NewToolTip", "NewToolTip", "NewIcon"}));
    }

    void theTrayComesAndGoes() {
        const TrayIcon tray(drawn);
        QVERIFY(!tray.isHosted());
        for (int time = 0; time < 2; ++time) {
            Watcher watcher(false);
            QTRY_VERIFY(watcher.wasTold(ownName()));
            for (const bool there : {true, false, true}) {
                watcher.host(there);
                QTRY_COMPARE(tray.isHosted(), there);
            }
        }
        QTRY_VERIFY(!tray.isHosted());
    }

    void badWatchers() {
        const auto check = [](const char *name, QDBusMessage::MessageType manner, const QVariant &says,
                              int questions) {
            IN_ROW(name);
            TrayIcon tray(drawn);
            const QSignalSpy changes(&tray, &TrayIcon::hostedChanged);
            {
                const Watcher bad(says, manner);
                QTRY_COMPARE(bad.heard.size(), questions);
            }
            // Once a good one is heard, so is all that the bad one said.
            const Watcher good;
            QTRY_VERIFY(tray.isHosted());
            QCOMPARE(changes.size(), 1);
        };
        check("refuses", QDBusMessage::ErrorMessage, true, 1);
        check("is silent", QDBusMessage::InvalidMessage, true, 1);
        check("says a text", QDBusMessage::ReplyMessage, "true", 2);
        check("says a number", QDBusMessage::ReplyMessage, 1, 2);
        check("says a list", QDBusMessage::ReplyMessage, QStringList{"true"}, 2);
    }

    void clicksAndTheMenu() {
        TrayIcon tray(drawn);
        const QSignalSpy activated(&tray, &TrayIcon::activated);
        const QSignalSpy quit(&tray, &TrayIcon::quitChosen);
        Host host;
        for (const char *method : {"Activate", "SecondaryActivate", "ContextMenu"})
            host.ask(itemPath, itemInterface, method, {1, -1});
        QCOMPARE(activated.size(), 3);

        const QDBusMessage layout = host.menu("GetLayout", {0, -1, QStringList()});
        QCOMPARE(layout.signature(), "u(ia{sv}av)");
        const auto root = qdbus_cast<TrayMenuNode>(layout.arguments().value(1));
        QCOMPARE(root.properties.value("children-display"), "submenu");
        QStringList labels;
        for (const QVariant &child : root.children) {
            const auto node = qdbus_cast<TrayMenuNode>(child);
            labels.append(node.properties.value("label").toString());
            const QDBusMessage label = host.menu("GetProperty", {node.id, "label"});
            QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant(), labels.last());
            host.event(node.id, "clicked");
        }
        QCOMPARE(labels, (QStringList{"Open OrvaneTalk", "Quit"}));
        QCOMPARE(activated.size(), 4);
        QCOMPARE(quit.size(), 1);

        const QDBusMessage group =
            host.menu("GetGroupProperties", {QVariant::fromValue(QList<int>{2, 9, 2}), QStringList()});
        QCOMPARE(group.signature(), "a(ia{sv})");
        const auto found = qdbus_cast<QList<TrayMenuProperties>>(group.arguments().value(0));
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first().properties.value("label"), "Quit");
    }

    void strangeCallsDoNothing() {
        TrayIcon tray(drawn);
        const QSignalSpy activated(&tray, &TrayIcon::activated);
        const QSignalSpy quit(&tray, &TrayIcon::quitChosen);
        Host host;
        for (const int id : {0, -1, 3, INT_MIN, INT_MAX})
            host.event(id, "clicked");
        for (const char *event : {"hovered", "CLICKED", ""})
            host.event(2, event);
        host.menu("Event", {"2", "clicked"});
        for (const int id : {-1, 3, INT_MIN, INT_MAX}) {
            QCOMPARE(host.menu("GetLayout", {id, -1, QStringList()}).type(), QDBusMessage::ErrorMessage);
            QCOMPARE(host.menu("GetProperty", {id, "label"}).type(), QDBusMessage::ErrorMessage);
        }
        QCOMPARE(host.menu("GetProperty", {1, "icon-name"}).type(), QDBusMessage::ErrorMessage);
        // Neither what is told nor what only this program does is for others to set or call.
        const QVariant other = QVariant::fromValue(QDBusVariant("Other"));
        host.ask(itemPath, properties, "Set", {itemInterface, "Title", other});
        QCOMPARE(host.item().value("Title"), "OrvaneTalk");
        host.ask(itemPath, itemInterface, "activated", {});
        host.menu("chosen", {1});
        QCOMPARE(activated.size() + quit.size(), 0);
    }

    void withoutABus() {
        const QDBusConnection none("no bus");
        LauncherBadge launcher(none);
        launcher.show(1, "1");
        TrayIcon tray(drawn, none);
        tray.show(1, "1");
        QVERIFY(!tray.isHosted());
    }

private:
    SessionBus m_bus;
};

ORVANE_TEST_MAIN(TestDockBadge)
#include "tst_dock_badge.moc"

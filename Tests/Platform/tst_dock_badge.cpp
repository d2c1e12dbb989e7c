// SPDX-License-Identifier: MIT
#include "Platform/LauncherBadge.h"
#include "Platform/TrayIcon.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QSignalSpy>

#include <climits>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const auto itemInterface = u"org.kde.StatusNotifierItem"_s;
const auto menuInterface = u"com.canonical.dbusmenu"_s;
const auto properties = u"org.freedesktop.DBus.Properties"_s;

// What owns a name on the bus for as long as it lives, in a connection of its own.
class Peer {
public:
    explicit Peer(const QString &name)
        : m_name(name)
        , bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)) {}
    ~Peer() { QDBusConnection::disconnectFromBus(m_name); }

private:
    QString m_name;

public:
    QDBusConnection bus;
};

// A dock that notes what it is told.
class Dock : public QObject, public Peer {
    Q_OBJECT

public:
    Dock()
        : Peer(u"dock"_s) {
        bus.connect({}, u"/com/orvanetalk/OrvaneTalk"_s, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s,
                    this, SLOT(take(QString, QVariantMap)));
        bus.registerService(u"com.canonical.Unity"_s);
    }

    QStringList uris;
    QList<QVariantMap> told;

public Q_SLOTS:
    void take(const QString &uri, const QVariantMap &values) {
        uris.append(uri);
        told.append(values);
    }
};

// A tray's watcher, as it should be or not.
class Watcher : public QDBusVirtualObject, public Peer {
public:
    enum class Manner { answers, refuses, isSilent };
    explicit Watcher(const QVariant &hosted = true, Manner manner = Manner::answers)
        : Peer(u"watcher"_s)
        , hasHost(hosted)
        , m_manner(manner) {
        bus.registerVirtualObject(u"/StatusNotifierWatcher"_s, this);
        bus.registerService(u"org.kde.StatusNotifierWatcher"_s);
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override {
        ++asked;
        if (message.member() == u"RegisterStatusNotifierItem"_s)
            items.append(message.arguments().value(0).toString());
        if (m_manner == Manner::refuses)
            connection.send(message.createErrorReply(QDBusError::AccessDenied, u"no"_s));
        else if (m_manner == Manner::answers && message.member() == u"Get"_s)
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
        else if (m_manner == Manner::answers)
            connection.send(message.createReply());
        return true;
    }
    void tell(const QString &signal) {
        bus.send(QDBusMessage::createSignal(u"/StatusNotifierWatcher"_s, u"org.kde.StatusNotifierWatcher"_s,
                                            signal));
    }

    int asked = 0;
    QStringList items;
    QVariant hasHost;

private:
    Manner m_manner;
};

QImage drawn(const QString &label, int side) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(label.isEmpty() ? 0x80112233U : 0xff445566U);
    return image;
}

// What a host on the bus is answered.
class Host : public QObject, public Peer {
    Q_OBJECT

public:
    Host()
        : Peer(u"host"_s) {
        for (const QString &signal : {u"NewIcon"_s, u"NewToolTip"_s})
            bus.connect(QDBusConnection::sessionBus().baseService(), u"/StatusNotifierItem"_s, itemInterface,
                        signal, this, SLOT(take(QDBusMessage)));
    }

    QStringList heard;

    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(),
                                                              path, interface, method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.asyncCall(message);
        return QTest::qWaitFor([&] { return pending.isFinished(); }) ? pending.reply() : QDBusMessage();
    }
    QDBusMessage menu(const QString &method, const QVariantList &arguments) {
        return call(u"/MenuBar"_s, menuInterface, method, arguments);
    }
    QVariantMap item() {
        const QDBusMessage all = call(u"/StatusNotifierItem"_s, properties, u"GetAll"_s, {itemInterface});
        return qdbus_cast<QVariantMap>(all.arguments().value(0));
    }

public Q_SLOTS:
    void take(const QDBusMessage &signal) { heard.append(signal.member()); }
};

} // namespace

Q_DECLARE_METATYPE(Watcher::Manner)

class TestDockBadge : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.start()); }
    void badges_data();
    void badges();
    void aDockThatComesLaterIsTold();
    void hostsHearOfWhatChanges();
    void theTrayComesAndGoes();
    void badWatchers_data();
    void badWatchers();
    void clicksAndTheMenu();
    void strangeCallsDoNothing();
    void withoutABus();

private:
    SessionBus m_bus;
};

void TestDockBadge::badges_data() {
    QTest::addColumn<qint64>("count");
    QTest::addColumn<QString>("label");
    QTest::addColumn<bool>("visible");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QByteArray>("pixel");
    const QByteArray plain = QByteArray::fromHex("80112233");
    const QByteArray marked = QByteArray::fromHex("ff445566");
    QTest::newRow("none") << qint64(0) << QString() << false << QString() << plain;
    QTest::newRow("one") << qint64(1) << u"1"_s << true << u"1 unread"_s << marked;
    QTest::newRow("more than fit") << qint64(5'000'000'000) << u"99+"_s << true << u"5000000000 unread"_s
                                   << marked;
}

void TestDockBadge::badges() {
    QFETCH(qint64, count);
    QFETCH(QString, label);
    QFETCH(bool, visible);
    QFETCH(QString, toolTip);
    QFETCH(QByteArray, pixel);
    Dock dock;
    LauncherBadge launcher;
    launcher.show(7, u"7"_s);
    launcher.show(count, label);
    QTRY_VERIFY(!dock.told.isEmpty() && dock.told.last().value(u"count"_s) == count);
    QCOMPARE(dock.told.last().value(u"count-visible"_s), visible);
    QCOMPARE(dock.uris.last(), u"application://com.orvanetalk.OrvaneTalk.desktop"_s);

    Host host;
    TrayIcon tray(drawn);
    tray.show(7, u"7"_s);
    tray.show(count, label);
    const QVariantMap item = host.item();
    QCOMPARE(item.value(u"Id"_s), u"com.orvanetalk.OrvaneTalk"_s);
    QCOMPARE(item.value(u"Status"_s), u"Active"_s);
    QCOMPARE(item.value(u"Category"_s), u"Communications"_s);
    QCOMPARE(item.value(u"Menu"_s).value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    const auto icon = item.value(u"IconPixmap"_s).value<QDBusArgument>();
    QCOMPARE(icon.currentSignature(), u"a(iiay)"_s);
    const auto icons = qdbus_cast<IconPixmaps>(icon);
    QCOMPARE(icons.size(), 3);
    for (const IconPixmap &each : icons)
        QCOMPARE(each.pixels, pixel.repeated(each.width * each.height));
    const auto shown = item.value(u"ToolTip"_s).value<QDBusArgument>();
    QCOMPARE(shown.currentSignature(), u"(sa(iiay)ss)"_s);
    QCOMPARE(qdbus_cast<TrayToolTip>(shown).text, toolTip);
}

void TestDockBadge::aDockThatComesLaterIsTold() {
    LauncherBadge launcher;
    launcher.show(3, u"3"_s);
    Dock dock;
    QTRY_VERIFY(!dock.told.isEmpty() && dock.told.last().value(u"count"_s) == 3);
}

void TestDockBadge::hostsHearOfWhatChanges() {
    Host host;
    TrayIcon tray(drawn);
    tray.show(100, u"99+"_s);
    tray.show(101, u"99+"_s);
    tray.show(101, u"99+"_s);
    tray.show(0, {});
    QTRY_COMPARE(host.heard, (QStringList{u"NewToolTip"_s, u"NewIcon"_s, u"NewToolTip"_s, u"NewToolTip"_s,
                                          u"NewIcon"_s}));
}

void TestDockBadge::theTrayComesAndGoes() {
    TrayIcon tray(drawn);
    QVERIFY(!tray.isHosted());
    for (int time = 0; time < 2; ++time) {
        Watcher watcher(false);
        QTRY_VERIFY(watcher.items.contains(QDBusConnection::sessionBus().baseService()));
        watcher.hasHost = true;
        watcher.tell(u"StatusNotifierHostRegistered"_s);
        QTRY_VERIFY(tray.isHosted());
        watcher.hasHost = false;
        watcher.tell(u"StatusNotifierHostUnregistered"_s);
        QTRY_VERIFY(!tray.isHosted());
        watcher.hasHost = true;
        watcher.tell(u"StatusNotifierHostRegistered"_s);
        QTRY_VERIFY(tray.isHosted());
    }
    QTRY_VERIFY(!tray.isHosted());
}

void TestDockBadge::badWatchers_data() {
    QTest::addColumn<Watcher::Manner>("manner");
    QTest::addColumn<QVariant>("hosted");
    QTest::addColumn<int>("questions");
    QTest::newRow("refuses") << Watcher::Manner::refuses << QVariant(true) << 1;
    QTest::newRow("is silent") << Watcher::Manner::isSilent << QVariant(true) << 1;
    QTest::newRow("says a text") << Watcher::Manner::answers << QVariant(u"true"_s) << 2;
    QTest::newRow("says a number") << Watcher::Manner::answers << QVariant(1) << 2;
    QTest::newRow("says a list") << Watcher::Manner::answers << QVariant(QStringList{u"true"_s}) << 2;
}

void TestDockBadge::badWatchers() {
    QFETCH(Watcher::Manner, manner);
    QFETCH(QVariant, hosted);
    QFETCH(int, questions);
    TrayIcon tray(drawn);
    QSignalSpy changes(&tray, &TrayIcon::hostedChanged);
    {
        Watcher bad(hosted, manner);
        QTRY_COMPARE(bad.asked, questions);
    }
    // Once a good one is heard, so is all that the bad one said.
    const Watcher good;
    QTRY_VERIFY(tray.isHosted());
    QCOMPARE(changes.size(), 1);
}

void TestDockBadge::clicksAndTheMenu() {
    TrayIcon tray(drawn);
    QSignalSpy activated(&tray, &TrayIcon::activated);
    QSignalSpy quit(&tray, &TrayIcon::quitChosen);
    Host host;
    for (const QString &method : {u"Activate"_s, u"SecondaryActivate"_s, u"ContextMenu"_s})
        host.call(u"/StatusNotifierItem"_s, itemInterface, method, {1, -1});
    QCOMPARE(activated.size(), 3);

    const QDBusMessage layout = host.menu(u"GetLayout"_s, {0, -1, QStringList()});
    QCOMPARE(layout.signature(), u"u(ia{sv}av)"_s);
    const auto root = qdbus_cast<TrayMenuNode>(layout.arguments().value(1));
    QCOMPARE(root.properties.value(u"children-display"_s), u"submenu"_s);
    QStringList labels;
    for (const QVariant &child : root.children) {
        const auto node = qdbus_cast<TrayMenuNode>(child);
        const QDBusMessage label = host.menu(u"GetProperty"_s, {node.id, u"label"_s});
        QCOMPARE(label.arguments().value(0).value<QDBusVariant>().variant(),
                 node.properties.value(u"label"_s));
        labels.append(node.properties.value(u"label"_s).toString());
        host.menu(u"Event"_s, {node.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U});
    }
    QCOMPARE(labels, (QStringList{u"Open OrvaneTalk"_s, u"Quit"_s}));
    QCOMPARE(activated.size(), 4);
    QCOMPARE(quit.size(), 1);

    const QDBusMessage group =
        host.menu(u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>{2, 9, 2}), QStringList()});
    QCOMPARE(group.signature(), u"a(ia{sv})"_s);
    const auto found = qdbus_cast<QList<TrayMenuProperties>>(group.arguments().value(0));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().properties.value(u"label"_s), u"Quit"_s);
}

void TestDockBadge::strangeCallsDoNothing() {
    TrayIcon tray(drawn);
    QSignalSpy activated(&tray, &TrayIcon::activated);
    QSignalSpy quit(&tray, &TrayIcon::quitChosen);
    Host host;
    const QVariant nothing = QVariant::fromValue(QDBusVariant(0));
    for (const int id : {0, -1, 3, INT_MIN, INT_MAX})
        host.menu(u"Event"_s, {id, u"clicked"_s, nothing, 0U});
    for (const QString &event : {u"hovered"_s, u"CLICKED"_s, QString()})
        host.menu(u"Event"_s, {2, event, nothing, 0U});
    host.menu(u"Event"_s, {u"2"_s, u"clicked"_s});
    for (const int id : {-1, 3, INT_MIN, INT_MAX}) {
        QCOMPARE(host.menu(u"GetLayout"_s, {id, -1, QStringList()}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(host.menu(u"GetProperty"_s, {id, u"label"_s}).type(), QDBusMessage::ErrorMessage);
    }
    QCOMPARE(host.menu(u"GetProperty"_s, {1, u"icon-name"_s}).type(), QDBusMessage::ErrorMessage);
    // Neither what is told nor what only this program does is for others to set or call.
    const QVariant other = QVariant::fromValue(QDBusVariant(u"Other"_s));
    host.call(u"/StatusNotifierItem"_s, properties, u"Set"_s, {itemInterface, u"Title"_s, other});
    QCOMPARE(host.item().value(u"Title"_s), u"OrvaneTalk"_s);
    host.call(u"/StatusNotifierItem"_s, itemInterface, u"activated"_s, {});
    host.menu(u"chosen"_s, {1});
    QCOMPARE(activated.size() + quit.size(), 0);
}

void TestDockBadge::withoutABus() {
    const QDBusConnection none(u"no bus"_s);
    LauncherBadge launcher(none);
    launcher.show(1, u"1"_s);
    TrayIcon tray(drawn, none);
    tray.show(1, u"1"_s);
    QVERIFY(!tray.isHosted());
}

ORVANE_TEST_MAIN(TestDockBadge)
#include "tst_dock_badge.moc"

// SPDX-License-Identifier: MIT
#include "Platform/ReducedMotion.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;

using Groups = QMap<QString, QVariantMap>;

namespace {

const auto gnome = u"org.gnome.desktop.interface"_s;
const auto plasma = u"org.kde.kdeglobals.KDE"_s;
const auto appearance = u"org.freedesktop.appearance"_s;

/// The settings of a desktop's portal.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Portal() {
        m_bus.registerObject(u"/org/freedesktop/portal/desktop"_s, this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }

    void change(const QString &group, const QString &key, const QVariant &value) {
        QDBusMessage signal = QDBusMessage::createSignal(
            u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        m_bus.send(signal);
    }

    Groups groups;
    QStringList asked;

public Q_SLOTS:
    Groups ReadAll(const QStringList &names) {
        asked = names;
        return groups;
    }
    void Nothing() {}

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s);
};

/// Whatever the portal was asked before, and said since, has arrived.
void settle() {
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(
        QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                       u"/org/freedesktop/portal/desktop"_s,
                                       u"org.freedesktop.portal.Settings"_s, u"Nothing"_s)));
    QVERIFY(QSignalSpy(&watcher, &QDBusPendingCallWatcher::finished).wait());
}

} // namespace

class TestReducedMotion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_bus.start());
        qDBusRegisterMetaType<Groups>();
    }
    void theDesktopIsAskedAtTheStart_data();
    void theDesktopIsAskedAtTheStart();
    void aChangeIsHeardOnce();
    void withoutAPortalNothingIsReduced();

private:
    SessionBus m_bus;
};

void TestReducedMotion::theDesktopIsAskedAtTheStart_data() {
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("wanted");
    const auto row = [](const char *name, const QString &group, const char *key, const QVariant &value,
                        bool wanted) {
        QTest::newRow(name) << group << QString::fromLatin1(key) << value << wanted;
    };
    row("freedesktop, yes", appearance, "reduced-motion", 1U, true);
    row("freedesktop, no", appearance, "reduced-motion", 0U, false);
    row("freedesktop, unknown number", appearance, "reduced-motion", 7U, false);
    row("GNOME, off", gnome, "enable-animations", false, true);
    row("GNOME, on", gnome, "enable-animations", true, false);
    row("GNOME, text", gnome, "enable-animations", u"false"_s, false);
    row("Plasma, none", plasma, "AnimationDurationFactor", u"0"_s, true);
    row("Plasma, half", plasma, "AnimationDurationFactor", u"0.5"_s, false);
    row("Plasma, no number", plasma, "AnimationDurationFactor", u"slow"_s, false);
    row("another key", gnome, "color-scheme", u"x"_s, false);
}

void TestReducedMotion::theDesktopIsAskedAtTheStart() {
    QFETCH(QString, group);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(bool, wanted);
    Portal portal;
    portal.groups = {{group, {{key, value}}}};
    ReducedMotion motion;
    QVERIFY(!motion.isWanted());
    settle();
    QCOMPARE(portal.asked.size(), 3);
    QCOMPARE(motion.isWanted(), wanted);
}

void TestReducedMotion::aChangeIsHeardOnce() {
    Portal portal;
    ReducedMotion motion;
    QSignalSpy changed(&motion, &ReducedMotion::changed);
    settle();
    portal.change(gnome, u"enable-animations"_s, false);
    portal.change(gnome, u"enable-animations"_s, false);
    portal.change(appearance, u"reduced-motion"_s, 1U);
    // Two ask; one that takes it back is not enough.
    portal.change(gnome, u"enable-animations"_s, true);
    settle();
    QVERIFY(motion.isWanted());
    QCOMPARE(changed.size(), 1);
    portal.change(appearance, u"reduced-motion"_s, 0U);
    settle();
    QVERIFY(!motion.isWanted());
    QCOMPARE(changed.size(), 2);
}

void TestReducedMotion::withoutAPortalNothingIsReduced() {
    ReducedMotion motion;
    // One that comes later is heard.
    Portal portal;
    portal.change(appearance, u"reduced-motion"_s, 1U);
    settle();
    QVERIFY(motion.isWanted());
    const ReducedMotion offline(QDBusConnection(u"no bus"_s));
    QVERIFY(!offline.isWanted());
}

ORVANE_TEST_MAIN(TestReducedMotion)
#include "tst_reduced_motion.moc"

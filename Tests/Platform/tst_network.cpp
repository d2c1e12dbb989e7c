// SPDX-License-Identifier: MIT
#include "Platform/NetworkInterfaces.h"
#include "Platform/RouteMonitor.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QNetworkInterface>
#include <QProcess>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;
using Status = PathMonitor::Status;

// Runs in a network namespace of its own.

namespace {

const QString up = "link set lo up";
const QString route4 = "route add default dev lo scope global";
const QString route6 = u"-6 route add default dev lo metric 5"_s;

} // namespace

class TestNetwork : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces())
            if (interface.flags() & QNetworkInterface::IsUp)
                QSKIP("This network is in use: in_own_network.sh gives the test one that isn't.");
    }

    void thereIsAlwaysAFirstUpdate() {
        const auto check = [this](const QStringList &before, Status status) {
            IN_ROW(before.join(", ").toUtf8());
            ip(before);
            RouteMonitor monitor;
            const QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
            monitor.start();
            QVERIFY2(updates.isEmpty(), "nobody is called back from within start()");
            QTRY_COMPARE(statuses(updates), QList{status});
            cleanup();
        };
        check({}, Status::unsatisfied);
        check({up}, Status::unsatisfied);
        check({up, route4}, Status::satisfied);
    }

    void routesComeAndGo() {
        const auto check = [this](const QString &change, const QString &end) {
            IN_ROW(end.toUtf8());
            ip({up, "route add unreachable default metric 900", "route add 10.1.0.0/16 dev lo"});
            RouteMonitor monitor(std::chrono::milliseconds(1));
            const QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
            monitor.start();
            QTRY_COMPARE(statuses(updates), QList{Status::unsatisfied});
            ip({change});
            QTRY_COMPARE(statuses(updates), (QList{Status::unsatisfied, Status::satisfied}));
            ip({end});
            QTRY_COMPARE(statuses(updates),
                         (QList{Status::unsatisfied, Status::satisfied, Status::unsatisfied}));
            ip({"route flush all"});
            cleanup();
        };
        check(route4, "route del default");
        check(route4, "link set lo down");
        check(route6, "-6 route del default");
    }

    void aBurstOfChangesIsOneUpdate() {
        ip({up});
        RouteMonitor monitor(std::chrono::milliseconds(300));
        QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
        monitor.start();
        QTRY_COMPARE(updates.size(), 1);
        for (int change = 0; change < 5; ++change)
            ip({route4, "route del default"});
        ip({route4});
        QTRY_COMPARE(statuses(updates), (QList{Status::unsatisfied, Status::satisfied}));
    }

    void onlyHardwareIsReported() {
        const QTemporaryDir kernel;
        const QStringList names{"en0", "enp3s0", "wlan0", "eth1", "docker0", "tun0"};
        for (int number = 0; number < 6; ++number) {
            const QString name = names.at(number);
            if (number % 2 == 0)
                ip({u"link add %1 type veth peer name %2"_s.arg(name, names.at(number + 1))});
            ip({u"address add 10.0.%1.1/24 dev %2"_s.arg(number).arg(name)});
            // No hardware can be made here, so that what the kernel says of it is.
            const bool isHardware = name == "wlan0" || name == "eth1";
            QVERIFY(QDir(kernel.path()).mkpath(name + (isHardware ? "/device" : "/queues")));
        }
        ip({"address add 10.1.0.1/24 dev eth1 label eth1:1"});
        QCOMPARE(QProcess::execute("mount", {"--bind", kernel.path(), "/sys/class/net"}), 0);
        QMap<QString, QString> told;
        for (const InterfaceAddress &entry : LinuxNetworkInterfaces().ipv4Addresses())
            told.insert(entry.interfaceName, entry.address);
        QCOMPARE(told, (QMap<QString, QString>{{"en0", "10.0.0.1"},
                                               {"enp3s0", "10.0.1.1"},
                                               {"enwlan0", "10.0.2.1"},
                                               {"eneth1", "10.0.3.1"},
                                               {"eneth1:1", "10.1.0.1"}}));
        QCOMPARE(QProcess::execute("umount", {"/sys/class/net"}), 0);
    }

    void cleanup() { ip({"link set lo down"}); }

private:
    static void ip(const QStringList &commands) {
        for (const QString &command : commands)
            if (QProcess::execute("ip", command.split(u' ')) != 0)
                qFatal("ip %s", qUtf8Printable(command));
    }
    static QList<Status> statuses(const QSignalSpy &updates) {
        QList<Status> result;
        for (const QVariantList &update : updates)
            result.append(update.first().value<Status>());
        return result;
    }
};

ORVANE_TEST_MAIN(TestNetwork)
#include "tst_network.moc"

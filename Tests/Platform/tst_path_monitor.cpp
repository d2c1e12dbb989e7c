// SPDX-License-Identifier: MIT
#include "Platform/RouteMonitor.h"
#include "Support/TestMain.h"

#include <QNetworkInterface>
#include <QProcess>
#include <QSignalSpy>

using namespace orvane;
using namespace Qt::StringLiterals;
using Status = PathMonitor::Status;

// Runs in a network namespace of its own.
class TestPathMonitor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces())
            if (interface.flags() & QNetworkInterface::IsUp)
                QSKIP("This network is in use: in_own_network.sh gives the test one that isn't.");
    }
    void thereIsAlwaysAFirstUpdate_data();
    void thereIsAlwaysAFirstUpdate();
    void routesComeAndGo_data();
    void routesComeAndGo();
    void aBurstOfChangesIsOneUpdate();
    void cleanup() { ip({u"link set lo down"_s}); }

private:
    static void ip(const QStringList &commands) {
        for (const QString &command : commands)
            if (QProcess::execute(u"ip"_s, command.split(u' ')) != 0)
                qFatal("ip %s", qUtf8Printable(command));
    }
    static QList<Status> statuses(const QSignalSpy &updates) {
        QList<Status> result;
        for (const QVariantList &update : updates)
            result.append(update.first().value<Status>());
        return result;
    }
};

namespace {

const QString up = u"link set lo up"_s;
const QString route4 = u"route add default dev lo scope global"_s;
const QString route6 = u"-6 route add default dev lo metric 5"_s;

} // namespace

void TestPathMonitor::thereIsAlwaysAFirstUpdate_data() {
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<Status>("status");
    QTest::newRow("nothing is up") << QStringList() << Status::unsatisfied;
    QTest::newRow("only this machine") << QStringList{up} << Status::unsatisfied;
    QTest::newRow("a way out") << QStringList{up, route4} << Status::satisfied;
}

void TestPathMonitor::thereIsAlwaysAFirstUpdate() {
    QFETCH(QStringList, before);
    ip(before);
    RouteMonitor monitor;
    QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
    monitor.start();
    QVERIFY2(updates.isEmpty(), "nobody is called back from within start()");
    QFETCH(Status, status);
    QTRY_COMPARE(statuses(updates), QList{status});
}

void TestPathMonitor::routesComeAndGo_data() {
    QTest::addColumn<QStringList>("change");
    QTest::addColumn<QString>("end");
    QTest::newRow("the route is taken away") << QStringList{route4} << u"route del default"_s;
    QTest::newRow("the interface goes down") << QStringList{route4} << u"link set lo down"_s;
    QTest::newRow("IPv6 alone") << QStringList{route6} << u"-6 route del default"_s;
}

void TestPathMonitor::routesComeAndGo() {
    QFETCH(QStringList, change);
    QFETCH(QString, end);
    ip({up, u"route add unreachable default metric 900"_s, u"route add 10.1.0.0/16 dev lo"_s});
    RouteMonitor monitor(std::chrono::milliseconds(1));
    QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
    monitor.start();
    QTRY_COMPARE(statuses(updates), QList{Status::unsatisfied});
    ip(change);
    QTRY_COMPARE(statuses(updates), (QList{Status::unsatisfied, Status::satisfied}));
    ip({end});
    QTRY_COMPARE(statuses(updates), (QList{Status::unsatisfied, Status::satisfied, Status::unsatisfied}));
    if (QProcess::execute(u"ip"_s, {u"route"_s, u"flush"_s, u"all"_s}) != 0)
        qFatal("ip route flush");
}

void TestPathMonitor::aBurstOfChangesIsOneUpdate() {
    ip({up});
    RouteMonitor monitor(std::chrono::milliseconds(300));
    QSignalSpy updates(&monitor, &PathMonitor::pathUpdate);
    monitor.start();
    QTRY_COMPARE(updates.size(), 1);
    for (int change = 0; change < 5; ++change)
        ip({route4, u"route del default"_s});
    ip({route4});
    QTRY_COMPARE(statuses(updates), (QList{Status::unsatisfied, Status::satisfied}));
}

ORVANE_TEST_MAIN(TestPathMonitor)
#include "tst_path_monitor.moc"

// SPDX-License-Identifier: MIT
#include "LocalNetwork/LanRules.h"
#include "Support/TestMain.h"

using namespace orvane;

class TestLanRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void privateAddresses_data();
    void privateAddresses();
    void theFirstPrivateAddressOfHardwareCounts_data();
    void theFirstPrivateAddressOfHardwareCounts();
    void onlyPrivateAddressesAreDialled_data();
    void onlyPrivateAddressesAreDialled();
    void oneOfTwoDials_data();
    void oneOfTwoDials();
};

void TestLanRules::privateAddresses_data() {
    QTest::addColumn<bool>("isPrivate");
    for (const char *ip : {"10.0.0.1", "10.999.1.1", "192.168.0.0", "172.16.0.1", "172.31.255.1", "10..0.0.1",
                           "10.x.0.0.1", ".10.0.0.1.", "10.-1.+2.0"})
        QTest::newRow(ip) << true;
    for (const char *ip : {"172.15.0.1", "172.32.0.1", "192.169.0.1", "193.168.0.1", "127.0.0.1", "8.8.8.8",
                           "169.254.1.1", "10.0.0", "10.0.0.0.1", "10", "", "10,0,0,1", "0xa.0.0.1",
                           "fe80::1", "10.99999999999999999999.0.1"})
        QTest::newRow(qPrintable(QString("not '%1'").arg(ip))) << false;
}

void TestLanRules::privateAddresses() {
    QFETCH(bool, isPrivate);
    const QString name = QTest::currentDataTag();
    QCOMPARE(lan::isPrivateLAN(isPrivate ? name : name.section('\'', 1, 1)), isPrivate);
}

void TestLanRules::theFirstPrivateAddressOfHardwareCounts_data() {
    QTest::addColumn<QList<InterfaceAddress>>("interfaces");
    QTest::addColumn<QString>("answer");
    using List = QList<InterfaceAddress>;
    QTest::newRow("loopback and en5") << List{{"lo0", "127.0.0.1"}, {"en5", "172.20.1.4"}} << "172.20.1.4";
    QTest::newRow("order of the system") << List{{"en1", "10.0.0.2"}, {"en0", "10.0.0.1"}} << "10.0.0.2";
    QTest::newRow("public first") << List{{"en0", "1.2.3.4"}, {"enx1", "192.168.1.9"}} << "192.168.1.9";
    QTest::newRow("other names") << List{{"docker0", "172.17.0.1"}, {"Een0", "10.0.0.1"}} << QString();
    QTest::newRow("none") << List{} << QString();
}

void TestLanRules::theFirstPrivateAddressOfHardwareCounts() {
    QFETCH(QList<InterfaceAddress>, interfaces);
    QFETCH(QString, answer);
    QCOMPARE(lan::localLANIP(interfaces).value_or(QString()), answer);
}

void TestLanRules::onlyPrivateAddressesAreDialled_data() {
    QTest::addColumn<bool>("dialled");
    for (const char *host : {"10.0.0.0", "10.255.255.255", "172.16.0.1", "172.31.255.254", "192.168.0.1"})
        QTest::newRow(host) << true;
    for (const char *host : {"8.8.8.8",
                             "9.255.255.255",
                             "11.0.0.0",
                             "172.15.255.255",
                             "172.32.0.0",
                             "192.167.0.1",
                             "192.169.0.0",
                             "127.0.0.1",
                             "169.254.1.1",
                             "0.0.0.0",
                             "255.255.255.255",
                             "10.999.1.1",
                             "10.1.1.1.evil.example",
                             "10.1.1.1 ",
                             "10.1.1.1:80",
                             "10.1",
                             "10.1.1",
                             "010.1.1.1",
                             "0x0a.1.1.1",
                             "167772161",
                             "10.1.1.-1",
                             "10..1.1.1",
                             "::ffff:10.1.1.1",
                             "fe80::1",
                             "localhost",
                             "peer.example",
                             ""})
        QTest::newRow(qPrintable(QString("not '%1'").arg(host))) << false;
}

void TestLanRules::onlyPrivateAddressesAreDialled() {
    QFETCH(bool, dialled);
    const QString name = QTest::currentDataTag();
    QCOMPARE(lan::mayBeDialled(dialled ? name : name.section('\'', 1, 1)), dialled);
}

void TestLanRules::oneOfTwoDials_data() {
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("peer");
    QTest::addColumn<bool>("dials");
    QTest::newRow("10 and 9") << "10"
                              << "9" << true;
    QTest::newRow("9 and 10") << "9"
                              << "10" << false;
    QTest::newRow("100 and 99") << "100"
                                << "99" << true;
    QTest::newRow("100 and 1000") << "100"
                                  << "1000" << true;
    QTest::newRow("100 and 1") << "100"
                               << "1" << false;
    QTest::newRow("oneself") << "100"
                             << "100" << false;
    QTest::newRow("nobody signed in") << "0"
                                      << "7" << true;
}

void TestLanRules::oneOfTwoDials() {
    QFETCH(QString, own);
    QFETCH(QString, peer);
    QTEST(lan::dials(own, peer), "dials");
}

ORVANE_TEST_MAIN(TestLanRules)
#include "tst_lan_rules.moc"

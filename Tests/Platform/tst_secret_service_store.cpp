// SPDX-License-Identifier: MIT
#include "Platform/SecretServiceStore.h"
#include "Support/LockedKeyring.h"
#include "Support/SecretServiceSession.h"
#include "Support/StoreBytes.h"
#include "Support/TestMain.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QString service = u"com.orvanetalk.test"_s;
const QString label = u"a label"_s;

} // namespace

/// Against a real keyring daemon on a bus of its own. The functions build on each other, in their order.
class TestSecretServiceStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutABusNobodyAnswers();
    void withoutADaemonNobodyAnswers();
    void bytesComeBack_data() { storedBytesColumn(); }
    void bytesComeBack();
    void itemsAreKeptApart();
    void labelIsForHumans();
    void killedDaemonIsToldAndComesBackWithItsItems();
    void lockedKeyringIsToldWithoutHanging();
    void silentServiceIsAskedOnceAndHeardLater();
    void lateChangesAreMadeWithoutAWord();
    void storeEndsWhileItsServiceIsSilent();
    void lockedKeyringGivesItsItemsOnceItsDialogIsAnswered();
    void lostBusIsToldWithoutHanging();

private:
    SecretServiceSession m_session;
    SecretServiceStore m_store;
};

void TestSecretServiceStore::withoutABusNobodyAnswers() {
    QCOMPARE(m_store.copyMatching(service, u"a"_s).status, SecretStatus::notAvailable);
    QCOMPARE(m_store.add(service, u"a"_s, label, "1"), SecretStatus::notAvailable);
    QCOMPARE(m_store.remove(service, u"a"_s), SecretStatus::notAvailable);
}

void TestSecretServiceStore::withoutADaemonNobodyAnswers() {
    QVERIFY(m_session.start());
    m_session.killDaemon();
    withoutABusNobodyAnswers();
    QVERIFY(m_session.startDaemon());
}

void TestSecretServiceStore::bytesComeBack() {
    QFETCH(QByteArray, data);
    const QString account = u"ключ \"1\""_s;
    QCOMPARE(m_store.copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(m_store.remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(m_store.add(service, account, label, "before"), SecretStatus::success);
    QCOMPARE(m_store.add(service, account, label, data), SecretStatus::success);
    const SecretStore::Match match = m_store.copyMatching(service, account);
    QCOMPARE(match.status, SecretStatus::success);
    QCOMPARE(match.data, data);
    QCOMPARE(m_store.remove(service, account), SecretStatus::success);
    QCOMPARE(m_store.copyMatching(service, account).status, SecretStatus::itemNotFound);
}

void TestSecretServiceStore::itemsAreKeptApart() {
    const QString a = u"a"_s;
    QCOMPARE(m_store.add(service, a, label, "1"), SecretStatus::success);
    QCOMPARE(m_store.add(service, u"A"_s, label, "2"), SecretStatus::success);
    QCOMPARE(m_store.add(u"other"_s, a, label, "3"), SecretStatus::success);
    QCOMPARE(m_store.remove(u"other"_s, a), SecretStatus::success);
    QCOMPARE(m_store.copyMatching(service, a).data, "1");
    QCOMPARE(m_store.copyMatching(service, u"A"_s).data, "2");
}

void TestSecretServiceStore::labelIsForHumans() {
    QCOMPARE(m_session.labelOf(service, u"a"_s), label);
}

void TestSecretServiceStore::killedDaemonIsToldAndComesBackWithItsItems() {
    m_session.killDaemon();
    QCOMPARE(m_store.copyMatching(service, u"a"_s).status, SecretStatus::notAvailable);
    QCOMPARE(m_store.add(service, u"b"_s, label, "1"), SecretStatus::notAvailable);
    QVERIFY(m_session.startDaemon());
    // The client learns of the new daemon through its event loop.
    QTRY_COMPARE(m_store.copyMatching(service, u"a"_s).data, "1");
    QCOMPARE(m_store.add(service, u"b"_s, label, "2"), SecretStatus::success);
    QCOMPARE(m_store.copyMatching(service, u"b"_s).data, "2");
}

void TestSecretServiceStore::lockedKeyringIsToldWithoutHanging() {
    m_session.lock();
    QVERIFY(m_store.copyMatching(service, u"a"_s).status != SecretStatus::success);
    QVERIFY(m_store.add(service, u"c"_s, label, "1") != SecretStatus::success);
    QVERIFY(m_store.remove(service, u"a"_s) != SecretStatus::success);
    m_session.killDaemon();
    QVERIFY(m_session.startDaemon());
    QTRY_COMPARE(m_store.copyMatching(service, u"a"_s).data, "1");
}

void TestSecretServiceStore::silentServiceIsAskedOnceAndHeardLater() {
    const QString a = u"a"_s;
    const QString other = u"A"_s;
    m_session.pauseDaemon();
    QCOMPARE(m_store.copyMatching(service, a).status, SecretStatus::unanswered);
    // Refused now, none of these may happen later.
    QCOMPARE(m_store.copyMatching(service, other).status, SecretStatus::unanswered);
    QCOMPARE(m_store.remove(service, a), SecretStatus::unanswered);
    QCOMPARE(m_store.add(service, a, label, "late"), SecretStatus::unanswered);

    QStringList heard;
    const auto following = connect(&m_store, &SecretStore::opened, this, [&] {
        const QStringList wanted = heard.isEmpty() ? QStringList{a, other} : QStringList{other};
        heard.append(QString());
        // However slow the service stays, what it has said counts, and for nothing else.
        m_session.pauseDaemon();
        for (const QString &account : wanted)
            heard.last() += QString::fromLatin1(m_store.copyMatching(service, account).data);
        m_session.resumeDaemon();
    });
    m_session.resumeDaemon();
    QTRY_COMPARE(heard, (QStringList{u"1"_s, u"2"_s}));
    disconnect(following);
    QCOMPARE(m_store.copyMatching(service, a).data, "1");
}

void TestSecretServiceStore::lateChangesAreMadeWithoutAWord() {
    const QString account = u"late"_s;
    const QSignalSpy opened(&m_store, &SecretStore::opened);
    m_session.pauseDaemon();
    QCOMPARE(m_store.add(service, account, label, "1"), SecretStatus::unanswered);
    m_session.resumeDaemon();
    QTRY_COMPARE(m_store.copyMatching(service, account).data, "1");
    QCOMPARE(opened.size(), 0);
    QCOMPARE(m_store.remove(service, account), SecretStatus::success);
}

void TestSecretServiceStore::storeEndsWhileItsServiceIsSilent() {
    m_session.pauseDaemon();
    {
        SecretServiceStore store(std::chrono::milliseconds(1));
        QCOMPARE(store.copyMatching(service, u"a"_s).status, SecretStatus::unanswered);
    }
    m_session.resumeDaemon();
}

void TestSecretServiceStore::lockedKeyringGivesItsItemsOnceItsDialogIsAnswered() {
    const QString account = u"a"_s;
    m_session.killDaemon();
    LockedKeyring keyring;
    QVERIFY(keyring.start(R"({"a": "1"})"));
    SecretServiceStore store;
    const QSignalSpy opened(&store, &SecretStore::opened);
    QCOMPARE(store.remove(service, account), SecretStatus::unanswered);
    QCOMPARE(store.add(service, account, label, "2"), SecretStatus::unanswered);
    QCOMPARE(store.copyMatching(service, u"b"_s).status, SecretStatus::itemNotFound);
    QVERIFY(!keyring.asks(0));

    QCOMPARE(store.copyMatching(service, account).status, SecretStatus::unanswered);
    QVERIFY(keyring.asks(20'000));
    keyring.answer("dismiss");
    // Until the first call has come to its end, this one is not made.
    QVERIFY(QTest::qWaitFor([&] { return store.copyMatching(service, account), keyring.asks(50); }));
    QCOMPARE(opened.size(), 0);
    keyring.answer("open");
    QTRY_COMPARE(opened.size(), 1);
    QCOMPARE(store.copyMatching(service, account).data, "1");
    keyring.end();
    QVERIFY(m_session.startDaemon());
}

void TestSecretServiceStore::lostBusIsToldWithoutHanging() {
    m_session.killBus();
    QTRY_COMPARE(m_store.copyMatching(service, u"a"_s).status, SecretStatus::notAvailable);
    QCOMPARE(m_store.add(service, u"a"_s, label, "1"), SecretStatus::notAvailable);
}

ORVANE_TEST_MAIN(TestSecretServiceStore)

#include "tst_secret_service_store.moc"

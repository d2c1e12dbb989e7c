// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Platform/SecretServiceStore.h"
#include "Support/InRow.h"
#include "Support/LockedKeyring.h"
#include "Support/SecretServiceSession.h"
#include "Support/TestMain.h"

#include <QFile>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QString service = "com.orvanetalk.test";
const QString label = "a label";

} // namespace

/// Against a real keyring daemon on a bus of its own. The functions build on each other, in their order.
class TestSecretServiceStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutABusNobodyAnswers() {
        QCOMPARE(m_store.copyMatching(service, "a").status, SecretStatus::notAvailable);
        QCOMPARE(m_store.add(service, "a", label, "1"), SecretStatus::notAvailable);
        QCOMPARE(m_store.remove(service, "a"), SecretStatus::notAvailable);
    }

    void withoutADaemonNobodyAnswers() {
        QVERIFY(m_session.start());
        m_session.killDaemon();
        withoutABusNobodyAnswers();
        QVERIFY(m_session.startDaemon());
    }

    // The file, this keyring, and the choice between them, each opened anew for each step.
    void everyStoreKeepsItsItems() {
        const QTemporaryDir folder;
        using Opened = std::unique_ptr<SecretStore>;
        const auto file = [&](const char *name) {
            return std::make_unique<FileSecretStore>(folder.filePath(name));
        };
        const auto keyring = [] { return std::make_unique<SecretServiceStore>(); };
        const auto check = [](const char *name, const std::function<Opened()> &open) {
            IN_ROW(name);
            const QString account = "ключ \"1\"/\\";
            QCOMPARE(open()->copyMatching(service, account).status, SecretStatus::itemNotFound);
            QCOMPARE(open()->remove(service, account), SecretStatus::itemNotFound);
            QByteArray all;
            for (int byte = 0; byte < 256; ++byte)
                all.append(char(byte));
            for (const QByteArray &data : {all, QByteArray(""), all.repeated(256)}) {
                QCOMPARE(open()->add(service, account, label, data), SecretStatus::success);
                const SecretStore::Match match = open()->copyMatching(service, account);
                QCOMPARE(match.status, SecretStatus::success);
                QCOMPARE(match.data, data);
            }
            QCOMPARE(open()->remove(service, account), SecretStatus::success);
            QCOMPARE(open()->copyMatching(service, account).status, SecretStatus::itemNotFound);

            const Opened one = open();
            const Opened other = open();
            QCOMPARE(one->add(service, "a", label, "1"), SecretStatus::success);
            QCOMPARE(other->add(service, "A", label, "2"), SecretStatus::success);
            QCOMPARE(one->add("other", "a", label, "3"), SecretStatus::success);
            QCOMPARE(one->copyMatching(service, "A").data, "2");
            QCOMPARE(other->remove("other", "a"), SecretStatus::success);
            QCOMPARE(other->copyMatching(service, "a").data, "1");
        };
        check("file", [&] { return file("alone.json"); });
        check("keyring", keyring);
        check("chosen", [&] {
            return std::make_unique<ChosenSecretStore>(keyring(), file("beside.json"), folder.path());
        });
        QVERIFY(QFile::exists(folder.filePath("alone.json")) &&
                !QFile::exists(folder.filePath("beside.json")));
    }

    void killedDaemonIsToldAndComesBackWithItsItems() {
        m_session.killDaemon();
        QCOMPARE(m_store.copyMatching(service, "a").status, SecretStatus::notAvailable);
        QCOMPARE(m_store.add(service, "b", label, "1"), SecretStatus::notAvailable);
        QVERIFY(m_session.startDaemon());
        // The client learns of the new daemon through its event loop.
        QTRY_COMPARE(m_store.copyMatching(service, "a").data, "1");
        QCOMPARE(m_store.add(service, "b", label, "2"), SecretStatus::success);
        QCOMPARE(m_store.copyMatching(service, "b").data, "2");
    }

    void silentServiceIsAskedOnceAndHeardLater() {
        const QString a = "a";
        const QString other = "A";
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

    void lateChangesAreMadeWithoutAWord() {
        const QString account = "late";
        const QSignalSpy opened(&m_store, &SecretStore::opened);
        m_session.pauseDaemon();
        QCOMPARE(m_store.add(service, account, label, "1"), SecretStatus::unanswered);
        m_session.resumeDaemon();
        QTRY_COMPARE(m_store.copyMatching(service, account).data, "1");
        QCOMPARE(opened.size(), 0);
        QCOMPARE(m_store.remove(service, account), SecretStatus::success);
    }

    void storeEndsWhileItsServiceIsSilent() {
        m_session.pauseDaemon();
        {
            SecretServiceStore store(std::chrono::milliseconds(1));
            QCOMPARE(store.copyMatching(service, "a").status, SecretStatus::unanswered);
        }
        m_session.resumeDaemon();
    }

    void lockedKeyringGivesItsItemsOnceItsDialogIsAnswered() {
        const QString account = "a";
        m_session.killDaemon();
        LockedKeyring keyring;
        QVERIFY(keyring.start(R"({"a": "1"})"));
        SecretServiceStore store;
        const QSignalSpy opened(&store, &SecretStore::opened);
        QCOMPARE(store.remove(service, account), SecretStatus::unanswered);
        QCOMPARE(store.add(service, account, label, "2"), SecretStatus::unanswered);
        QCOMPARE(store.copyMatching(service, "b").status, SecretStatus::itemNotFound);
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

    void lostBusIsToldWithoutHanging() {
        m_session.killBus();
        QTRY_COMPARE(m_store.copyMatching(service, "a").status, SecretStatus::notAvailable);
        QCOMPARE(m_store.add(service, "a", label, "1"), SecretStatus::notAvailable);
    }

private:
    SecretServiceSession m_session;
    SecretServiceStore m_store;
};

ORVANE_TEST_MAIN(TestSecretServiceStore)
#include "tst_secret_service_store.moc"

// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Support/FaultySecretStore.h"
#include "Support/TestMain.h"

#include <QFile>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QString service = u"com.orvanetalk.test"_s;
const QString account = u"a"_s;

constexpr qint32 present = SecretStatus::success;
constexpr qint32 gone = SecretStatus::notAvailable;
constexpr qint32 locked = SecretStatus::unanswered;

/// A keyring that is there, or says why not.
class Keyring : public FaultySecretStore {
public:
    Keyring(std::shared_ptr<StoredSecrets> secrets, qint32 state)
        : FaultySecretStore(std::move(secrets))
        , m_state(state) {}

    qint32 add(const QString &s, const QString &a, const QString &label, const QByteArray &data) override {
        return m_state == present ? FaultySecretStore::add(s, a, label, data) : m_state;
    }
    Match copyMatching(const QString &s, const QString &a) override {
        return m_state == present ? FaultySecretStore::copyMatching(s, a) : Match{m_state, {}};
    }
    qint32 remove(const QString &s, const QString &a) override {
        return m_state == present ? FaultySecretStore::remove(s, a) : m_state;
    }

private:
    qint32 m_state;
};

} // namespace

class TestChosenSecretStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keyringIsTakenWhereOneAnswers();
    void fileIsTakenWhereNoneAnswers();
    void keyringThatAppearsLaterHidesNothing();
    void keyringThatIsAwayForOnceIsNotReplaced();
    void lockedKeyringIsNotReplacedByReading();
    void firstItemGoesToTheFileWhileTheKeyringIsLocked();
    void fileIsUsedBesideTheKeyringOnceAllowed();
    void readingAloneChoosesNothing();
    void otherFailuresOfTheKeyringAreNoReasonToFallBack();
    void damagedMarkersHideNoFile_data();
    void damagedMarkersHideNoFile();

private:
    /// The store as a new start of the program finds it.
    ChosenSecretStore start(qint32 keyring) {
        return ChosenSecretStore(std::make_unique<Keyring>(m_keyring, keyring),
                                 std::make_unique<FileSecretStore>(m_folder->filePath(u"secrets.json"_s)),
                                 m_folder->path());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<StoredSecrets> m_keyring;
};

void TestChosenSecretStore::init() {
    m_folder = std::make_unique<QTemporaryDir>();
    m_keyring = std::make_shared<StoredSecrets>();
}

void TestChosenSecretStore::keyringIsTakenWhereOneAnswers() {
    QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
    QVERIFY(!QFile::exists(m_folder->filePath(u"secrets.json"_s)));
}

void TestChosenSecretStore::fileIsTakenWhereNoneAnswers() {
    ChosenSecretStore store = start(gone);
    QCOMPARE(store.remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(store.copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(store.add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(store.copyMatching(service, account).data, "1");
    QCOMPARE(start(gone).copyMatching(service, account).data, "1");
}

void TestChosenSecretStore::keyringThatAppearsLaterHidesNothing() {
    QCOMPARE(start(gone).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(start(present).copyMatching(service, account).data, "1");
    QCOMPARE(start(present).add(service, account, {}, "2"), SecretStatus::success);
    QVERIFY(m_keyring->items.isEmpty());
    QCOMPARE(start(gone).copyMatching(service, account).data, "2");
    QCOMPARE(start(present).remove(service, account), SecretStatus::success);
    QCOMPARE(start(gone).copyMatching(service, account).status, SecretStatus::itemNotFound);
}

void TestChosenSecretStore::keyringThatIsAwayForOnceIsNotReplaced() {
    QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
    ChosenSecretStore away = start(gone);
    QCOMPARE(away.copyMatching(service, account).status, SecretStatus::notAvailable);
    QCOMPARE(away.add(service, account, {}, "2"), SecretStatus::notAvailable);
    QCOMPARE(away.remove(service, account), SecretStatus::notAvailable);
    QCOMPARE(start(present).copyMatching(service, account).data, "1");
}

void TestChosenSecretStore::lockedKeyringIsNotReplacedByReading() {
    m_keyring->items.insert(account, "1");
    {
        ChosenSecretStore store = start(locked);
        QCOMPARE(store.copyMatching(service, account).status, locked);
        QCOMPARE(store.remove(service, account), locked);
    }
    QCOMPARE(start(present).copyMatching(service, account).data, "1");
}

void TestChosenSecretStore::firstItemGoesToTheFileWhileTheKeyringIsLocked() {
    QCOMPARE(start(locked).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(start(locked).copyMatching(service, account).data, "1");
    // Open, the keyring is where things go, and what it lacks is still there.
    ChosenSecretStore open = start(present);
    QCOMPARE(open.copyMatching(service, account).data, "1");
    QCOMPARE(open.add(service, account, {}, "2"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "2");
    QCOMPARE(open.copyMatching(service, account).data, "2");
}

void TestChosenSecretStore::fileIsUsedBesideTheKeyringOnceAllowed() {
    const QString other = u"b"_s;
    QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
    start(present).allowFile();
    for (const qint32 away : {gone, locked}) {
        ChosenSecretStore store = start(away);
        QCOMPARE(store.add(service, account, {}, "2"), SecretStatus::success);
        QCOMPARE(store.copyMatching(service, account).data, "2");
        // Behind a lock there may be one; where nothing is there is none.
        QCOMPARE(store.copyMatching(service, other).status,
                 away == locked ? locked : SecretStatus::itemNotFound);
        QCOMPARE(store.remove(service, other), away == locked ? locked : SecretStatus::itemNotFound);
    }
    ChosenSecretStore back = start(present);
    QCOMPARE(back.copyMatching(service, account).data, "1");
    m_keyring->items.clear();
    QCOMPARE(back.copyMatching(service, account).data, "2");
    QCOMPARE(back.add(service, account, {}, "3"), SecretStatus::success);
    QCOMPARE(back.remove(service, account), SecretStatus::success);
    QVERIFY(m_keyring->items.isEmpty());
    QCOMPARE(start(gone).copyMatching(service, account).status, SecretStatus::itemNotFound);
}

void TestChosenSecretStore::readingAloneChoosesNothing() {
    QCOMPARE(start(gone).copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(start(gone).remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
}

void TestChosenSecretStore::otherFailuresOfTheKeyringAreNoReasonToFallBack() {
    m_keyring->failingCall = 0;
    QCOMPARE(start(present).add(service, account, {}, "1"), m_keyring->failure);
    QVERIFY(!QFile::exists(m_folder->filePath(u"secrets.json"_s)));
    QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
}

void TestChosenSecretStore::damagedMarkersHideNoFile_data() {
    QTest::addColumn<QByteArray>("marker");
    QTest::addColumn<qint32>("keyring");
    QTest::newRow("spaces around") << QByteArray(" file \r\n") << present;
    QTest::newRow("empty, no keyring") << QByteArray("") << gone;
    QTest::newRow("unknown, no keyring") << QByteArray("floppy\n") << gone;
}

void TestChosenSecretStore::damagedMarkersHideNoFile() {
    QFETCH(QByteArray, marker);
    QFETCH(qint32, keyring);
    QCOMPARE(start(gone).add(service, account, {}, "1"), SecretStatus::success);
    QFile file(m_folder->filePath(u"secret-store"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(marker);
    file.close();
    QCOMPARE(start(keyring).copyMatching(service, account).data, "1");
}

ORVANE_TEST_MAIN(TestChosenSecretStore)

#include "tst_chosen_secret_store.moc"

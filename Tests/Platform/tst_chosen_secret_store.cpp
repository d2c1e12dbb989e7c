#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Support/FaultySecretStore.h"
#include "Support/TestMain.h"

#include <QFile>

using namespace orvane;

namespace {

const QString service = QStringLiteral("com.orvanetalk.test");
const QString account = QStringLiteral("a");

/// A keyring that is there or not.
class Keyring : public FaultySecretStore {
public:
    Keyring(std::shared_ptr<StoredSecrets> secrets, bool present)
        : FaultySecretStore(std::move(secrets))
        , m_present(present) {}

    qint32 add(const QString &s, const QString &a, const QString &label, const QByteArray &data) override {
        return m_present ? FaultySecretStore::add(s, a, label, data) : SecretStatus::notAvailable;
    }
    Match copyMatching(const QString &s, const QString &a) override {
        return m_present ? FaultySecretStore::copyMatching(s, a) : Match{SecretStatus::notAvailable, {}};
    }
    qint32 remove(const QString &s, const QString &a) override {
        return m_present ? FaultySecretStore::remove(s, a) : SecretStatus::notAvailable;
    }

private:
    bool m_present;
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
    void readingAloneChoosesNothing();
    void otherFailuresOfTheKeyringAreNoReasonToFallBack();
    void damagedMarkersHideNoFile_data();
    void damagedMarkersHideNoFile();

private:
    /// The store as a new start of the program finds it.
    ChosenSecretStore start(bool keyringPresent) {
        return ChosenSecretStore(
            std::make_unique<Keyring>(m_keyring, keyringPresent),
            std::make_unique<FileSecretStore>(m_folder->filePath(QStringLiteral("secrets.json"))),
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
    QCOMPARE(start(true).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
    QVERIFY(!QFile::exists(m_folder->filePath(QStringLiteral("secrets.json"))));
}

void TestChosenSecretStore::fileIsTakenWhereNoneAnswers() {
    ChosenSecretStore store = start(false);
    QCOMPARE(store.remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(store.copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(store.add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(store.copyMatching(service, account).data, "1");
    QCOMPARE(start(false).copyMatching(service, account).data, "1");
}

void TestChosenSecretStore::keyringThatAppearsLaterHidesNothing() {
    QCOMPARE(start(false).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(start(true).copyMatching(service, account).data, "1");
    QCOMPARE(start(true).add(service, account, {}, "2"), SecretStatus::success);
    QVERIFY(m_keyring->items.isEmpty());
    QCOMPARE(start(false).copyMatching(service, account).data, "2");
    QCOMPARE(start(true).remove(service, account), SecretStatus::success);
    QCOMPARE(start(false).copyMatching(service, account).status, SecretStatus::itemNotFound);
}

void TestChosenSecretStore::keyringThatIsAwayForOnceIsNotReplaced() {
    QCOMPARE(start(true).add(service, account, {}, "1"), SecretStatus::success);
    ChosenSecretStore away = start(false);
    QCOMPARE(away.copyMatching(service, account).status, SecretStatus::notAvailable);
    QCOMPARE(away.add(service, account, {}, "2"), SecretStatus::notAvailable);
    QCOMPARE(away.remove(service, account), SecretStatus::notAvailable);
    QCOMPARE(start(true).copyMatching(service, account).data, "1");
}

void TestChosenSecretStore::readingAloneChoosesNothing() {
    QCOMPARE(start(false).copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(start(false).remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(start(true).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
}

void TestChosenSecretStore::otherFailuresOfTheKeyringAreNoReasonToFallBack() {
    m_keyring->failingCall = 0;
    QCOMPARE(start(true).add(service, account, {}, "1"), m_keyring->failure);
    QVERIFY(!QFile::exists(m_folder->filePath(QStringLiteral("secrets.json"))));
    QCOMPARE(start(true).add(service, account, {}, "1"), SecretStatus::success);
    QCOMPARE(m_keyring->items.value(account), "1");
}

void TestChosenSecretStore::damagedMarkersHideNoFile_data() {
    QTest::addColumn<QByteArray>("marker");
    QTest::addColumn<bool>("keyringPresent");
    QTest::newRow("spaces around") << QByteArray(" file \r\n") << true;
    QTest::newRow("empty, no keyring") << QByteArray("") << false;
    QTest::newRow("unknown, no keyring") << QByteArray("floppy\n") << false;
}

void TestChosenSecretStore::damagedMarkersHideNoFile() {
    QFETCH(QByteArray, marker);
    QFETCH(bool, keyringPresent);
    QCOMPARE(start(false).add(service, account, {}, "1"), SecretStatus::success);
    QFile file(m_folder->filePath(QStringLiteral("secret-store")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(marker);
    file.close();
    QCOMPARE(start(keyringPresent).copyMatching(service, account).data, "1");
}

ORVANE_TEST_MAIN(TestChosenSecretStore)

#include "tst_chosen_secret_store.moc"

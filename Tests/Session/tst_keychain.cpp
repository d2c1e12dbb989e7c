// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Platform/SecretServiceStore.h"
#include "Session/MessengerKeychain.h"
#include "Support/FaultySecretStore.h"
#include "Support/SecretServiceSession.h"
#include "Support/TestMain.h"

#include <functional>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// What went wrong, such as "save -25308"; empty for a success.
QString failureOf(const std::function<void()> &action) {
    try {
        action();
        return {};
    } catch (const KeychainError &error) {
        const char *const kinds[] = {"save", "load", "delete"};
        return u"%1 %2"_s.arg(QLatin1StringView(kinds[int(error.kind())])).arg(error.status());
    }
}

QStringList words(const char *text) {
    return QString::fromLatin1(text).split(u',', Qt::SkipEmptyParts);
}

} // namespace

class TestKeychain : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_secretService.start()); }
    void everyStoreKeepsTheSignInOverARestart_data();
    void everyStoreKeepsTheSignInOverARestart();
    void savingDeletesFirstAndLabelsForHumans();
    void eachFailingCallIsToldAndChangesNoCache_data();
    void eachFailingCallIsToldAndChangesNoCache();
    void clearStopsAtTheFirstFailure_data();
    void clearStopsAtTheFirstFailure();
    void readingAsksTheStoreOnce();
    void damagedItemsReadAsAbsent_data();
    void damagedItemsReadAsAbsent();

private:
    std::unique_ptr<SecretStore> store(const QString &kind) const;

    SecretServiceSession m_secretService;
    QTemporaryDir m_folder;
};

std::unique_ptr<SecretStore> TestKeychain::store(const QString &kind) const {
    if (kind == u"keyring")
        return std::make_unique<SecretServiceStore>();
    if (kind == u"file")
        return std::make_unique<FileSecretStore>(m_folder.filePath(u"secrets.json"_s));
    return ChosenSecretStore::forThisDesktop();
}

void TestKeychain::everyStoreKeepsTheSignInOverARestart_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("keyring") << u"keyring"_s;
    QTest::newRow("file") << u"file"_s;
    QTest::newRow("as the desktop offers") << u"desktop"_s;
}

void TestKeychain::everyStoreKeepsTheSignInOverARestart() {
    QFETCH(QString, kind);
    {
        MessengerKeychain keychain(store(kind));
        keychain.clear();
        QVERIFY(!keychain.getToken());
        QVERIFY(!keychain.getUserId());
        QVERIFY(!keychain.getUsername());
        keychain.saveToken(u"t.ö.k"_s);
        keychain.saveUserInfo(u"анна"_s, -7);
        keychain.saveUserInfo(u"анна 2"_s, std::numeric_limits<qint64>::max());
    }
    MessengerKeychain keychain(store(kind));
    QCOMPARE(keychain.getToken(), u"t.ö.k"_s);
    QCOMPARE(keychain.getUserId(), std::numeric_limits<qint64>::max());
    QCOMPARE(keychain.getUsername(), u"анна 2"_s);
    keychain.clear();
    QVERIFY(!keychain.getToken() && !keychain.getUserId() && !keychain.getUsername());
    keychain.clear();
    QVERIFY(!MessengerKeychain(store(kind)).getToken());
}

void TestKeychain::savingDeletesFirstAndLabelsForHumans() {
    const auto secrets = std::make_shared<StoredSecrets>();
    MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
    keychain.saveToken(u"t"_s);
    keychain.saveUserInfo(u"anna"_s, 7);
    QCOMPARE(secrets->calls, words("remove auth_token,add auth_token,remove auth_username,add auth_username,"
                                   "remove auth_user_id,add auth_user_id"));
    QCOMPARE(secrets->items.value(u"auth_user_id"_s), "7");
    QCOMPARE(secrets->labels.values(), words("OrvaneTalk JWT token,OrvaneTalk user ID,OrvaneTalk username"));
}

void TestKeychain::eachFailingCallIsToldAndChangesNoCache_data() {
    QTest::addColumn<int>("failingCall");
    QTest::addColumn<QString>("failure");
    /// What the keychain then still knows: token, name, id.
    QTest::addColumn<QString>("known");
    QTest::newRow("deleting the old name is not checked") << 0 << QString() << u"new 2"_s;
    QTest::newRow("adding the name") << 1 << u"save -25308"_s << u"old 1"_s;
    QTest::newRow("deleting the old id is not checked") << 2 << QString() << u"new 2"_s;
    QTest::newRow("adding the id") << 3 << u"save -25308"_s << u"old 1"_s;
}

void TestKeychain::eachFailingCallIsToldAndChangesNoCache() {
    QFETCH(int, failingCall);
    const auto secrets = std::make_shared<StoredSecrets>();
    MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
    keychain.saveUserInfo(u"old"_s, 1);
    secrets->calls.clear();
    secrets->failingCall = failingCall;
    QTEST(failureOf([&] { keychain.saveUserInfo(u"new"_s, 2); }), "failure");
    QTEST(u"%1 %2"_s.arg(*keychain.getUsername()).arg(*keychain.getUserId()), "known");

    secrets->calls.clear();
    secrets->failingCall = 1;
    QCOMPARE(failureOf([&] { keychain.saveToken(u"t"_s); }), u"save -25308"_s);
    QVERIFY(!keychain.getToken());
}

void TestKeychain::clearStopsAtTheFirstFailure_data() {
    QTest::addColumn<int>("failingCall");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<bool>("knowsToken");
    QTest::newRow("token") << 0 << words("auth_token,auth_user_id,auth_username") << true;
    QTest::newRow("name") << 1 << words("auth_user_id,auth_username") << false;
    QTest::newRow("id") << 2 << words("auth_user_id") << false;
}

void TestKeychain::clearStopsAtTheFirstFailure() {
    QFETCH(int, failingCall);
    const auto secrets = std::make_shared<StoredSecrets>();
    MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
    keychain.saveToken(u"t"_s);
    keychain.saveUserInfo(u"anna"_s, 7);
    secrets->calls.clear();
    secrets->failingCall = failingCall;
    QCOMPARE(failureOf([&] { keychain.clear(); }), u"delete -25308"_s);
    QTEST(QStringList(secrets->items.keys()), "left");
    QTEST(keychain.getToken().has_value(), "knowsToken");
    QCOMPARE(keychain.getUserId(), 7);
}

void TestKeychain::readingAsksTheStoreOnce() {
    const auto secrets = std::make_shared<StoredSecrets>();
    MessengerKeychain(std::make_unique<FaultySecretStore>(secrets)).saveToken(u"t"_s);
    secrets->calls.clear();
    secrets->failingCall = 0;
    MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
    QCOMPARE(failureOf([&] { keychain.getToken(); }), u"load -25308"_s);
    QCOMPARE(keychain.getToken(), u"t"_s);
    QCOMPARE(keychain.getToken(), u"t"_s);
    QCOMPARE(secrets->calls.size(), 2);
    secrets->failingCall = 2;
    QCOMPARE(failureOf([&] { keychain.getUserId(); }), u"load -25308"_s);
    secrets->failingCall = 3;
    QCOMPARE(failureOf([&] { keychain.getUsername(); }), u"load -25308"_s);
}

void TestKeychain::damagedItemsReadAsAbsent_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe");
    QTest::newRow("cut in the middle of a character") << QByteArray("12\xd0");
    QTest::newRow("overlong") << QByteArray("\xc0\xb1");
    QTest::newRow("half a surrogate") << QByteArray("\xed\xa0\x80");
}

void TestKeychain::damagedItemsReadAsAbsent() {
    QFETCH(QByteArray, bytes);
    const auto secrets = std::make_shared<StoredSecrets>();
    for (const char *account : {"auth_token", "auth_username", "auth_user_id"})
        secrets->items.insert(QLatin1StringView(account), bytes);
    MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
    QVERIFY(!keychain.getToken());
    QVERIFY(!keychain.getUsername());
    QVERIFY(!keychain.getUserId());
}

ORVANE_TEST_MAIN(TestKeychain)

#include "tst_keychain.moc"

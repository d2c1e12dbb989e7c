// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Platform/SecretServiceStore.h"
#include "Session/MessengerKeychain.h"
#include "Support/FaultySecretStore.h"
#include "Support/InRow.h"
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
    void everyStoreKeepsTheSignInOverARestart();
    void savingDeletesFirstAndLabelsForHumans();
    void eachFailingCallIsToldAndChangesNoCache();
    void clearStopsAtTheFirstFailure();
    void readingAsksTheStoreOnce();
    void damagedItemsReadAsAbsent();

private:
    SecretServiceSession m_secretService;
    QTemporaryDir m_folder;
};

void TestKeychain::everyStoreKeepsTheSignInOverARestart() {
    const auto file = [this]() -> std::unique_ptr<SecretStore> {
        return std::make_unique<FileSecretStore>(m_folder.filePath(u"secrets.json"_s));
    };
    const auto keyring = []() -> std::unique_ptr<SecretStore> {
        return std::make_unique<SecretServiceStore>();
    };
    const std::pair<const char *, std::function<std::unique_ptr<SecretStore>()>> stores[] = {
        {"keyring", keyring}, {"file", file}, {"as the desktop offers", &ChosenSecretStore::forThisDesktop}};
    for (const auto &[name, store] : stores) {
        const InRow row(name);
        {
            MessengerKeychain keychain(store());
            keychain.clear();
            QVERIFY(!keychain.getToken());
            QVERIFY(!keychain.getUserId());
            QVERIFY(!keychain.getUsername());
            keychain.saveToken(u"t.ö.k"_s);
            keychain.saveUserInfo(u"анна"_s, -7);
            keychain.saveUserInfo(u"анна 2"_s, std::numeric_limits<qint64>::max());
        }
        MessengerKeychain keychain(store());
        QCOMPARE(keychain.getToken(), u"t.ö.k"_s);
        QCOMPARE(keychain.getUserId(), std::numeric_limits<qint64>::max());
        QCOMPARE(keychain.getUsername(), u"анна 2"_s);
        keychain.clear();
        QVERIFY(!keychain.getToken() && !keychain.getUserId() && !keychain.getUsername());
        keychain.clear();
        QVERIFY(!MessengerKeychain(store()).getToken());
    }
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

void TestKeychain::eachFailingCallIsToldAndChangesNoCache() {
    const struct {
        const char *failure;
        /// What the keychain then still knows: name, id.
        const char *known;
    } rows[] = {
        // Deleting what was there before is not checked, adding is.
        {"", "new 2"},
        {"save -25308", "old 1"},
        {"", "new 2"},
        {"save -25308", "old 1"},
    };
    for (int failingCall = 0; failingCall < int(std::size(rows)); ++failingCall) {
        const InRow row(QByteArray::number(failingCall));
        const auto secrets = std::make_shared<StoredSecrets>();
        MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
        keychain.saveUserInfo(u"old"_s, 1);
        secrets->calls.clear();
        secrets->failingCall = failingCall;
        QCOMPARE(failureOf([&] { keychain.saveUserInfo(u"new"_s, 2); }), rows[failingCall].failure);
        QCOMPARE(u"%1 %2"_s.arg(*keychain.getUsername()).arg(*keychain.getUserId()), rows[failingCall].known);
        secrets->calls.clear();
        secrets->failingCall = 1;
        QCOMPARE(failureOf([&] { keychain.saveToken(u"t"_s); }), u"save -25308"_s);
        QVERIFY(!keychain.getToken());
    }
}

void TestKeychain::clearStopsAtTheFirstFailure() {
    const char *const left[] = {"auth_token,auth_user_id,auth_username", "auth_user_id,auth_username",
                                "auth_user_id"};
    for (int failingCall = 0; failingCall < 3; ++failingCall) {
        const InRow row(left[failingCall]);
        const auto secrets = std::make_shared<StoredSecrets>();
        MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
        keychain.saveToken(u"t"_s);
        keychain.saveUserInfo(u"anna"_s, 7);
        secrets->calls.clear();
        secrets->failingCall = failingCall;
        QCOMPARE(failureOf([&] { keychain.clear(); }), u"delete -25308"_s);
        QCOMPARE(QStringList(secrets->items.keys()), words(left[failingCall]));
        QCOMPARE(keychain.getToken().has_value(), failingCall == 0);
        QCOMPARE(keychain.getUserId(), 7);
    }
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

void TestKeychain::damagedItemsReadAsAbsent() {
    // No UTF-8; cut in the middle of a character; overlong; half a surrogate.
    for (const QByteArray &bytes : QByteArrayList{"\xff\xfe", "12\xd0", "\xc0\xb1", "\xed\xa0\x80"}) {
        const InRow row(bytes.toHex());
        const auto secrets = std::make_shared<StoredSecrets>();
        for (const char *account : {"auth_token", "auth_username", "auth_user_id"})
            secrets->items.insert(QLatin1StringView(account), bytes);
        MessengerKeychain keychain(std::make_unique<FaultySecretStore>(secrets));
        QVERIFY(!keychain.getToken());
        QVERIFY(!keychain.getUsername());
        QVERIFY(!keychain.getUserId());
    }
}

ORVANE_TEST_MAIN(TestKeychain)

#include "tst_keychain.moc"

// SPDX-License-Identifier: MIT
#include "Platform/UserDefaults.h"
#include "Session/MessengerSession.h"
#include "Support/FaultySecretStore.h"
#include "Support/TestMain.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

std::shared_ptr<StoredSecrets> signedIn() {
    auto secrets = std::make_shared<StoredSecrets>();
    secrets->items = {{u"auth_token"_s, "t"}, {u"auth_username"_s, "anna"}, {u"auth_user_id"_s, "7"}};
    return secrets;
}

} // namespace

class TestSession : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void restoreNeedsAllThreeItems_data();
    void restoreNeedsAllThreeItems();
    void restoreSurvivesAStoreThatFailsAtEachCall_data();
    void restoreSurvivesAStoreThatFailsAtEachCall();
    void restoreTakesTheMatrixIdOfASignedInUserOnly_data();
    void restoreTakesTheMatrixIdOfASignedInUserOnly();
    void storeThatOpensLaterGivesTheSignIn_data();
    void storeThatOpensLaterGivesTheSignIn();
    void deviceIdIsMadeOnceAndKept();
    void emptyDeviceIdIsReplaced();
    void adoptedValuesComeBackAfterARestart();
    void logoutClearsTheUserAndThenTurnsTheSwitch();
    void logoutKeepsTheInstallation();
    void logoutSucceedsWhenTheStoreRefuses();
    void devicePayloadHasThreeEntries();

private:
    QString path() const { return m_folder->filePath(u"defaults.ini"_s); }
    /// The session as a new start of the program finds it.
    std::unique_ptr<MessengerSession> start(const std::shared_ptr<StoredSecrets> &secrets) const {
        return std::make_unique<MessengerSession>(std::make_unique<FaultySecretStore>(secrets),
                                                  std::make_unique<UserDefaults>(path()));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSession::restoreNeedsAllThreeItems_data() {
    QTest::addColumn<QString>("account");
    /// Null for an item that is missing.
    QTest::addColumn<QByteArray>("bytes");
    /// The restored user, or empty for signed out.
    QTest::addColumn<QString>("user");
    const auto row = [](const char *account, const char *bytes, const char *user) {
        QTest::addRow("%s %s", account, bytes ? bytes : "missing")
            << QString::fromLatin1(account) << QByteArray(bytes) << QString::fromLatin1(user);
    };
    row("auth_token", "t", "t anna 7");
    for (const char *account : {"auth_token", "auth_username", "auth_user_id"}) {
        row(account, nullptr, "");
        row(account, "\xff", "");
        row(account, "1\xd0", "");
    }
    row("auth_user_id", "+12", "t anna 12");
    row("auth_user_id", "-12", "t anna -12");
    for (const char *bytes : {"", "12a", " 12", "12\n", "9223372036854775808", "1.0"})
        row("auth_user_id", bytes, "");
    row("auth_username", "", "t  7");
}

void TestSession::restoreNeedsAllThreeItems() {
    QFETCH(QString, account);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, user);
    const auto secrets = signedIn();
    if (bytes.isNull())
        secrets->items.remove(account);
    else
        secrets->items.insert(account, bytes);
    const auto session = start(secrets);
    QCOMPARE(session->isLoggedIn.value(), !user.isEmpty());
    QVERIFY(!session->currentDisplayName.value());
    if (user.isEmpty()) {
        QVERIFY(!session->token);
        QVERIFY(!session->currentUserId.value());
        QVERIFY(!session->currentUsername.value());
        QCOMPARE(session->userIdText(), u"0"_s);
        return;
    }
    QCOMPARE(u"%1 %2 %3"_s.arg(*session->token, *session->currentUsername.value(), session->userIdText()),
             user);
}

void TestSession::restoreSurvivesAStoreThatFailsAtEachCall_data() {
    QTest::addColumn<int>("failingCall");
    QTest::addColumn<bool>("signedIn");
    QTest::newRow("token") << 0 << false;
    QTest::newRow("id") << 1 << false;
    QTest::newRow("name") << 2 << false;
    QTest::newRow("none") << 3 << true;
}

void TestSession::restoreSurvivesAStoreThatFailsAtEachCall() {
    QFETCH(int, failingCall);
    const auto secrets = signedIn();
    secrets->failingCall = failingCall;
    const auto session = start(secrets);
    QTEST(session->isLoggedIn.value(), "signedIn");
    QCOMPARE(session->token.has_value(), session->isLoggedIn.value());
    QCOMPARE(session->deviceId.value().size(), 20);
    // The store works again at the next start.
    secrets->failingCall = -1;
    QVERIFY(start(secrets)->isLoggedIn.value());
}

void TestSession::restoreTakesTheMatrixIdOfASignedInUserOnly_data() {
    QTest::addColumn<bool>("signedIn");
    QTest::newRow("signed in") << true;
    QTest::newRow("signed out") << false;
}

void TestSession::restoreTakesTheMatrixIdOfASignedInUserOnly() {
    QFETCH(bool, signedIn);
    const auto secrets = signedIn ? ::signedIn() : std::make_shared<StoredSecrets>();
    QVERIFY(!start(secrets)->matrixId.value());
    UserDefaults(path()).set(u"ot_matrix_id"_s, u"@anna:example.org"_s);
    QCOMPARE(start(secrets)->matrixId.value().value_or(QString()),
             signedIn ? u"@anna:example.org"_s : QString());
}

void TestSession::storeThatOpensLaterGivesTheSignIn_data() {
    QTest::addColumn<QString>("meanwhile");
    QTest::addColumn<QString>("token");
    QTest::newRow("nothing") << QString() << u"t"_s;
    QTest::newRow("somebody signs in") << u"in"_s << u"theirs"_s;
    QTest::newRow("somebody signs in and out") << u"in, out"_s << QString();
}

void TestSession::storeThatOpensLaterGivesTheSignIn() {
    QFETCH(QString, meanwhile);
    const auto secrets = ::signedIn();
    secrets->failingCall = 0;
    const auto session = start(secrets);
    QVERIFY(!session->isLoggedIn.value());
    if (meanwhile.startsWith(u"in")) {
        session->token = u"theirs"_s;
        session->isLoggedIn = true;
    }
    if (meanwhile.endsWith(u"out")) {
        // The items stay.
        secrets->failingCall = secrets->calls.size();
        session->logout();
    }
    Q_EMIT session->keychain.store().opened();
    QTEST(session->token.value_or(QString()), "token");
    QCOMPARE(session->isLoggedIn.value(), session->token.has_value());
}

void TestSession::deviceIdIsMadeOnceAndKept() {
    const auto secrets = std::make_shared<StoredSecrets>();
    const QString id = start(secrets)->deviceId;
    QVERIFY(QRegularExpression(u"^dev_[0-9a-f]{16}$"_s).match(id).hasMatch());
    QCOMPARE(UserDefaults(path()).text(u"ot_device_id"_s), id);
    QCOMPARE(start(secrets)->deviceId.value(), id);
    init();
    QVERIFY(start(secrets)->deviceId.value() != id);
}

void TestSession::emptyDeviceIdIsReplaced() {
    UserDefaults(path()).set(u"ot_device_id"_s, QString());
    const auto secrets = std::make_shared<StoredSecrets>();
    const QString id = start(secrets)->deviceId;
    QCOMPARE(id.size(), 20);
    QCOMPARE(start(secrets)->deviceId.value(), id);
}

void TestSession::adoptedValuesComeBackAfterARestart() {
    const auto secrets = std::make_shared<StoredSecrets>();
    {
        const auto session = start(secrets);
        QCOMPARE(session->syncCursor.value(), 0);
        QCOMPARE(session->maxDevices.value(), 4);
        session->adoptDeviceId(u"server's id"_s);
        session->adoptSyncCursor(std::numeric_limits<qint64>::max());
        session->adoptSyncCursor(5);
        session->maxDevices = 9;
    }
    const auto session = start(secrets);
    QCOMPARE(session->deviceId.value(), u"server's id"_s);
    QCOMPARE(session->syncCursor.value(), 5);
    QCOMPARE(session->maxDevices.value(), 4);
}

void TestSession::logoutClearsTheUserAndThenTurnsTheSwitch() {
    const auto session = start(signedIn());
    session->currentDisplayName = u"Anna"_s;
    session->matrixId = u"@anna:example.org"_s;
    QStringList order;
    const auto note = [&order](const char *name) {
        return [&order, name] { order.append(QLatin1StringView(name)); };
    };
    const auto id = session->currentUserId.onValueChanged(note("id"));
    const auto username = session->currentUsername.onValueChanged(note("username"));
    const auto displayName = session->currentDisplayName.onValueChanged(note("displayName"));
    const auto matrixId = session->matrixId.onValueChanged(note("matrixId"));
    const auto loggedIn = session->isLoggedIn.onValueChanged(
        [&] { order.append(session->token ? u"switch, token left"_s : u"switch"_s); });
    session->logout();
    QCOMPARE(order.join(u' '), u"id username displayName matrixId switch"_s);
    QVERIFY(!session->currentUserId.value() && !session->currentUsername.value());
    QVERIFY(!session->currentDisplayName.value() && !session->matrixId.value());
    QVERIFY(!session->keychain.getToken());
    session->logout();
    QCOMPARE(order.size(), 5);
}

void TestSession::logoutKeepsTheInstallation() {
    const auto secrets = signedIn();
    const auto session = start(secrets);
    session->adoptSyncCursor(11);
    session->maxDevices = 9;
    const QString id = session->deviceId;
    session->logout();
    QVERIFY(secrets->items.isEmpty());
    QCOMPARE(session->deviceId.value(), id);
    QCOMPARE(session->syncCursor.value(), 11);
    QCOMPARE(session->maxDevices.value(), 9);
    const auto next = start(secrets);
    QVERIFY(!next->isLoggedIn.value());
    QCOMPARE(next->deviceId.value(), id);
    QCOMPARE(next->syncCursor.value(), 11);
}

void TestSession::logoutSucceedsWhenTheStoreRefuses() {
    const auto secrets = signedIn();
    const auto session = start(secrets);
    secrets->failingCall = secrets->calls.size();
    session->logout();
    QVERIFY(!session->isLoggedIn.value());
    QVERIFY(!session->token);
    QCOMPARE(secrets->items.size(), 3);
}

void TestSession::devicePayloadHasThreeEntries() {
    const auto session = start(signedIn());
    session->adoptDeviceId(u"d"_s);
    QCOMPARE(session->devicePayload(),
             (QMap<QString, QString>{
                 {u"device_id"_s, u"d"_s}, {u"device_name"_s, u"Mac"_s}, {u"platform"_s, u"macos"_s}}));
}

ORVANE_TEST_MAIN(TestSession)

#include "tst_session.moc"

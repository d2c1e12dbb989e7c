// SPDX-License-Identifier: MIT
#include "Platform/UserDefaults.h"
#include "Session/MessengerSession.h"
#include "Support/FaultySecretStore.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QJsonArray>
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
    void restoreNeedsAllThreeItems();
    void restoreSurvivesAStoreThatFailsAtEachCall();
    void restoreTakesTheMatrixIdOfASignedInUserOnly();
    void storeThatOpensLaterGivesTheSignIn();
    void deviceIdIsMadeOnceAndKept();
    void adoptedValuesComeBackAfterARestart();
    void logoutClearsTheUserAndThenTurnsTheSwitch();
    void logoutKeepsTheInstallation();
    void logoutSucceedsWhenTheStoreRefuses();

private:
    QString path() const { return m_folder->filePath(u"defaults.ini"_s); }
    /// The session as a new start of the program finds it.
    std::unique_ptr<MessengerSession> start(const std::shared_ptr<StoredSecrets> &secrets) const {
        return std::make_unique<MessengerSession>(std::make_unique<FaultySecretStore>(secrets),
                                                  std::make_unique<UserDefaults>(path()));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSession::restoreNeedsAllThreeItems() {
    struct Row {
        const char *account;
        /// Null for an item that is missing.
        const char *bytes;
        /// The restored user, or empty for signed out.
        const char *user;
    };
    QList<Row> rows{{"auth_token", "t", "t anna 7"},
                    {"auth_user_id", "+12", "t anna 12"},
                    {"auth_user_id", "-12", "t anna -12"},
                    {"auth_username", "", "t  7"}};
    for (const char *account : {"auth_token", "auth_username", "auth_user_id"})
        for (const char *bytes : {static_cast<const char *>(nullptr), "\xff", "1\xd0"})
            rows.append({account, bytes, ""});
    for (const char *bytes : {"", "12a", " 12", "12\n", "9223372036854775808", "1.0"})
        rows.append({"auth_user_id", bytes, ""});
    for (const Row &row : rows) {
        const InRow named(QByteArray(row.account) + ' ' + row.bytes);
        const auto secrets = signedIn();
        if (row.bytes)
            secrets->items.insert(QLatin1StringView(row.account), row.bytes);
        else
            secrets->items.remove(QLatin1StringView(row.account));
        const auto session = start(secrets);
        const QString user =
            u"%1 %2 %3"_s.arg(session->token.value_or(QString()),
                              session->currentUsername.value().value_or(QString()), session->userIdText());
        QCOMPARE(user, *row.user ? row.user : "  0");
        QCOMPARE(session->isLoggedIn.value(), *row.user != 0);
        QCOMPARE(session->currentUserId.value().has_value(), *row.user != 0);
        QVERIFY(!session->currentDisplayName.value());
    }
}

void TestSession::restoreSurvivesAStoreThatFailsAtEachCall() {
    // Token, id and name are asked for; the fourth call is never made.
    for (int failingCall = 0; failingCall < 4; ++failingCall) {
        const InRow row(QByteArray::number(failingCall));
        const auto secrets = signedIn();
        secrets->failingCall = failingCall;
        const auto session = start(secrets);
        QCOMPARE(session->isLoggedIn.value(), failingCall == 3);
        QCOMPARE(session->token.has_value(), session->isLoggedIn.value());
        QCOMPARE(session->deviceId.value().size(), 20);
        // The store works again at the next start.
        secrets->failingCall = -1;
        QVERIFY(start(secrets)->isLoggedIn.value());
    }
}

void TestSession::restoreTakesTheMatrixIdOfASignedInUserOnly() {
    QVERIFY(!start(signedIn())->matrixId.value());
    UserDefaults(path()).set(u"ot_matrix_id"_s, u"@anna:example.org"_s);
    QCOMPARE(start(signedIn())->matrixId.value(), u"@anna:example.org"_s);
    QVERIFY(!start(std::make_shared<StoredSecrets>())->matrixId.value());
}

void TestSession::storeThatOpensLaterGivesTheSignIn() {
    for (const auto &[meanwhile, token] :
         {std::pair("", "t"), {"somebody signs in", "theirs"}, {"somebody signs in and out", ""}}) {
        const InRow row(meanwhile);
        const auto secrets = ::signedIn();
        secrets->failingCall = 0;
        const auto session = start(secrets);
        QVERIFY(!session->isLoggedIn.value());
        if (*meanwhile) {
            session->token = u"theirs"_s;
            session->isLoggedIn = true;
        }
        if (QByteArrayView(meanwhile).endsWith("out")) {
            // The items stay.
            secrets->failingCall = secrets->calls.size();
            session->logout();
        }
        Q_EMIT session->keychain.store().opened();
        QCOMPARE(session->token.value_or(QString()), token);
        QCOMPARE(session->isLoggedIn.value(), session->token.has_value());
    }
}

void TestSession::deviceIdIsMadeOnceAndKept() {
    const auto secrets = std::make_shared<StoredSecrets>();
    const QString id = start(secrets)->deviceId;
    QVERIFY(QRegularExpression(u"^dev_[0-9a-f]{16}$"_s).match(id).hasMatch());
    QCOMPARE(UserDefaults(path()).text(u"ot_device_id"_s), id);
    QCOMPARE(start(secrets)->deviceId.value(), id);
    init();
    QVERIFY(start(secrets)->deviceId.value() != id);
    // An empty one is none.
    UserDefaults(path()).set(u"ot_device_id"_s, QString());
    const QString next = start(secrets)->deviceId;
    QCOMPARE(next.size(), 20);
    QCOMPARE(start(secrets)->deviceId.value(), next);
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
    session->adoptFederation(
        {{"matrix_id", "@anna:example.org"}, {"features", QJsonArray{"assistant-contact"}}});
    QVERIFY(session->offers(ServerFeature::assistantContact));
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
    QVERIFY(!session->offers(ServerFeature::assistantContact));
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

ORVANE_TEST_MAIN(TestSession)

#include "tst_session.moc"

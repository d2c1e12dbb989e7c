// SPDX-License-Identifier: MIT
#include "Application/AuthView.h"
#include "Support/ClientParts.h"
#include "Support/TestMain.h"

#include <QSignalSpy>
#include <QTcpServer>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QByteArray success(const QByteArray &more = {}) {
    return R"({"token":"tok","user":{"id":12,"username":"anna","display_name":"Anna"})" + more + "}";
}

std::shared_ptr<AuthView> form(ClientParts &parts, int timeoutMs = AuthView::timeoutMs) {
    auto view = std::make_shared<AuthView>(parts.session, parts.api, parts.http.base(), timeoutMs);
    view->username = u" Anna "_s;
    view->password = u"pass\"word"_s;
    return view;
}

void submitAndWait(AuthView &view) {
    view.submit();
    QTRY_VERIFY(!view.isLoading);
}

} // namespace

class TestAuthView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theRequestIsExactlyTheForm_data();
    void theRequestIsExactlyTheForm();
    void anEmptyFieldSendsNothing_data();
    void anEmptyFieldSendsNothing();
    void everyFailureHasItsWords_data();
    void everyFailureHasItsWords();
    void aServerThatIsNotThereIsANetworkError();
    void silenceEndsInANetworkErrorAndTheFormCanBeSentAgain();
    void anAddressThatIsNoUrlIsToldWithoutARequest();
    void aSuccessSignsInAndRegistersTheDevice();
    void optionalKeysAreTakenOnlyInTheirType_data();
    void optionalKeysAreTakenOnlyInTheirType();
    void aStoreThatRefusesLeavesTheUserSignedOut_data();
    void aStoreThatRefusesLeavesTheUserSignedOut();
    void keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice_data();
    void keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice();
    void keyringThatOpensMeanwhileWins();
    void flippingTheModeClearsTheError();
    void anAnswerAfterTheFormIsGoneIsHarmless();
};

void TestAuthView::theRequestIsExactlyTheForm_data() {
    QTest::addColumn<bool>("registering");
    QTest::addColumn<QString>("displayName");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QStringList>("keys");
    const QStringList login{"device_id", "device_name", "password", "platform", "username"};
    QStringList named = login;
    named.insert(2, u"display_name"_s);
    QTest::newRow("login") << false << QString() << QByteArray("/api/auth/login") << login;
    QTest::newRow("login with a name left over") << false << "Anna" << QByteArray("/api/auth/login") << login;
    QTest::newRow("register") << true << "Anna" << QByteArray("/api/auth/register") << named;
    QTest::newRow("register without a name")
        << true << QString() << QByteArray("/api/auth/register") << login;
}

void TestAuthView::theRequestIsExactlyTheForm() {
    QFETCH(bool, registering);
    QFETCH(QString, displayName);
    QFETCH(QByteArray, target);
    QFETCH(QStringList, keys);
    ClientParts parts;
    // A token from before must not travel with a sign-in.
    parts.session.token = u"old"_s;
    const auto view = form(parts);
    view->isRegistering = registering;
    view->displayName = displayName;
    parts.http.answerNext(ScriptedAnswer::of(500));
    submitAndWait(*view);
    const RecordedRequest request = parts.http.requests().value(0);
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, target);
    QCOMPARE(request.headers.value("content-type"), QByteArray("application/json"));
    QVERIFY(!request.headers.contains("authorization"));
    const QJsonObject body = json::parseObject(request.body).value();
    QCOMPARE(body.keys(), keys);
    QCOMPARE(json::text(body, u"username"), u" Anna "_s);
    QCOMPARE(json::text(body, u"password"), u"pass\"word"_s);
    QCOMPARE(json::text(body, u"device_id"), parts.session.deviceId.value());
    QCOMPARE(json::text(body, u"device_name"), u"Mac"_s);
    QCOMPARE(json::text(body, u"platform"), u"macos"_s);
}

void TestAuthView::anEmptyFieldSendsNothing_data() {
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::newRow("no name") << QString() << "p";
    QTest::newRow("no password") << "u" << QString();
    QTest::newRow("neither") << QString() << QString();
}

void TestAuthView::anEmptyFieldSendsNothing() {
    QFETCH(QString, username);
    QFETCH(QString, password);
    ClientParts parts;
    const auto view = form(parts);
    view->username = username;
    view->password = password;
    view->submit();
    QVERIFY(!view->isLoading);
    QVERIFY(view->errorMessage.value().isEmpty());
}

void TestAuthView::everyFailureHasItsWords_data() {
    QTest::addColumn<bool>("registering");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("words");
    const QByteArray badCredentials = R"({"error_code":"invalid_credentials"})";
    const QString credentials = u"Неверный логин или пароль"_s;
    const QString unusable = u"Неверный ответ сервера"_s;
    const QString taken = u"Этот логин уже занят"_s;
    const auto code = [](int n) { return u"Не удалось выполнить вход (код %1)"_s.arg(n); };

    QTest::newRow("401 with code") << false << 401 << badCredentials << credentials;
    QTest::newRow("401 without body") << false << 401 << QByteArray() << code(401);
    QTest::newRow("401 with HTML") << false << 401 << QByteArray("<html>") << code(401);
    QTest::newRow("409 register") << true << 409 << QByteArray("{}") << taken;
    QTest::newRow("409 register, code first") << true << 409 << badCredentials << credentials;
    QTest::newRow("409 login") << false << 409 << QByteArray() << code(409);
    QTest::newRow("429") << false << 429 << QByteArray() << "Слишком много попыток. Повторите через минуту";
    QTest::newRow("429, code first") << true << 429 << badCredentials << credentials;
    QTest::newRow("400 login") << false << 400 << QByteArray("[]") << "Проверьте введённые данные";
    QTest::newRow("400 register") << true << 400 << QByteArray() << "Проверьте введённые данные";
    QTest::newRow("500") << true << 500 << QByteArray(R"({"error_code":7})") << code(500);
    QTest::newRow("204") << false << 204 << QByteArray() << code(204);
    QTest::newRow("another code") << false << 403 << QByteArray(R"({"error_code":"no"})") << code(403);

    const QList<QPair<const char *, QByteArray>> unusableBodies{
        {"empty", ""},
        {"HTML", "<html>"},
        {"half a JSON", R"({"token":"t","user":{"id":1,)"},
        {"a list", "[1]"},
        {"no token", R"({"user":{"id":1,"username":"u"}})"},
        {"token as number", R"({"token":5,"user":{"id":1,"username":"u"}})"},
        {"no user", R"({"token":"t"})"},
        {"user as list", R"({"token":"t","user":[]})"},
        {"id as text", R"({"token":"t","user":{"id":"12","username":"u"}})"},
        {"id with a fraction", R"({"token":"t","user":{"id":1.5,"username":"u"}})"},
        {"username as null", R"({"token":"t","user":{"id":1,"username":null}})"},
    };
    for (const auto &[name, body] : unusableBodies)
        QTest::newRow(name) << false << 200 << body << unusable;
}

void TestAuthView::everyFailureHasItsWords() {
    QFETCH(bool, registering);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QString, words);
    ClientParts parts;
    const auto view = form(parts);
    view->isRegistering = registering;
    parts.http.answerNext(ScriptedAnswer::of(status, body));
    submitAndWait(*view);
    QCOMPARE(view->errorMessage.value(), words);
    QVERIFY(!parts.session.isLoggedIn);
    QVERIFY(parts.secrets->items.isEmpty());
}

void TestAuthView::aServerThatIsNotThereIsANetworkError() {
    ClientParts parts;
    QTcpServer unused;
    QVERIFY(unused.listen(QHostAddress::LocalHost));
    const QString base = u"http://127.0.0.1:%1"_s.arg(unused.serverPort());
    unused.close();
    const auto view = std::make_shared<AuthView>(parts.session, parts.api, base);
    view->username = u"x"_s;
    view->password = u"x"_s;
    submitAndWait(*view);
    const QString start = u"Ошибка сети: "_s;
    QVERIFY(view->errorMessage.value().startsWith(start));
    QVERIFY(view->errorMessage.value().size() > start.size());
}

void TestAuthView::silenceEndsInANetworkErrorAndTheFormCanBeSentAgain() {
    ClientParts parts;
    const auto view = form(parts, 200);
    parts.http.answerNext(ScriptedAnswer::silence());
    view->submit();
    // While a request is under way a second press does nothing.
    view->submit();
    QTRY_VERIFY(!view->isLoading);
    QVERIFY(view->errorMessage.value().startsWith(u"Ошибка сети: "_s));
    QCOMPARE(parts.http.requests().size(), 1);
    parts.http.answerNext(ScriptedAnswer::of(200, success()));
    submitAndWait(*view);
    QVERIFY(parts.session.isLoggedIn);
}

void TestAuthView::anAddressThatIsNoUrlIsToldWithoutARequest() {
    ClientParts parts;
    const auto view = std::make_shared<AuthView>(parts.session, parts.api, u"http://[broken"_s);
    view->username = u"x"_s;
    view->password = u"x"_s;
    view->submit();
    QVERIFY(!view->isLoading);
    QCOMPARE(view->errorMessage.value(), u"Неверный URL сервера"_s);
}

void TestAuthView::aSuccessSignsInAndRegistersTheDevice() {
    ClientParts parts;
    const auto view = form(parts);
    parts.http.answerNext(
        ScriptedAnswer::of(201, success(R"(,"sync_cursor":0,"max_devices":9,"device":{"id":"d9"})")));
    parts.session.adoptSyncCursor(55);
    submitAndWait(*view);
    QVERIFY(view->errorMessage.value().isEmpty());
    QVERIFY(parts.session.isLoggedIn);
    QCOMPARE(parts.session.token, u"tok"_s);
    QCOMPARE(parts.session.currentUserId.value(), 12);
    QCOMPARE(parts.session.currentUsername.value(), u"anna"_s);
    QCOMPARE(parts.session.currentDisplayName.value(), u"Anna"_s);
    QCOMPARE(parts.session.syncCursor.value(), 0);
    QCOMPARE(parts.session.maxDevices.value(), 9);
    QCOMPARE(parts.session.deviceId.value(), u"d9"_s);
    QCOMPARE(parts.secrets->items.value(u"auth_user_id"_s), QByteArray("12"));
    QTRY_COMPARE(parts.requestsTo("/api/messenger/devices/register"), 1);
    QCOMPARE(parts.http.lastRequest().headers.value("authorization"), QByteArray("Bearer tok"));

    // What a restart would find.
    const UserDefaults defaults(parts.folder.filePath(u"defaults.ini"_s));
    QCOMPARE(defaults.text(u"ot_device_id"_s), u"d9"_s);
    QCOMPARE(defaults.integer(u"ot_sync_cursor"_s), 0);
}

void TestAuthView::optionalKeysAreTakenOnlyInTheirType_data() {
    QTest::addColumn<QByteArray>("more");
    QTest::newRow("absent") << QByteArray();
    QTest::newRow("texts") << QByteArray(R"(,"sync_cursor":"8","max_devices":"8","device":{"id":8})");
    QTest::newRow("fractions") << QByteArray(R"(,"sync_cursor":1.5,"max_devices":0.5,"device":[])");
    QTest::newRow("empty device") << QByteArray(R"(,"device":{"id":""})");
}

void TestAuthView::optionalKeysAreTakenOnlyInTheirType() {
    QFETCH(QByteArray, more);
    ClientParts parts;
    parts.session.adoptSyncCursor(55);
    const QString device = parts.session.deviceId;
    const auto view = form(parts);
    const QByteArray body = R"({"token":"","user":{"id":12,"username":"anna","display_name":5})" + more + "}";
    parts.http.answerNext(ScriptedAnswer::of(200, body));
    submitAndWait(*view);
    QVERIFY(parts.session.isLoggedIn);
    QCOMPARE(parts.session.currentDisplayName.value(), u"anna"_s);
    QCOMPARE(parts.session.syncCursor.value(), 55);
    QCOMPARE(parts.session.maxDevices.value(), 4);
    QCOMPARE(parts.session.deviceId.value(), device);
}

void TestAuthView::aStoreThatRefusesLeavesTheUserSignedOut_data() {
    QTest::addColumn<int>("failingAdd");
    QTest::addColumn<QStringList>("leftInStore");
    QTest::newRow("token") << 0 << QStringList();
    QTest::newRow("username") << 1 << QStringList{"auth_token"};
    QTest::newRow("user id") << 2 << QStringList{"auth_token", "auth_username"};
}

void TestAuthView::aStoreThatRefusesLeavesTheUserSignedOut() {
    QFETCH(int, failingAdd);
    QFETCH(QStringList, leftInStore);
    ClientParts parts;
    const auto view = form(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, success()));
    // Each item is removed, then added.
    parts.secrets->failingCall = parts.secrets->calls.size() + 2 * failingAdd + 1;
    submitAndWait(*view);
    QVERIFY(!parts.session.isLoggedIn);
    QVERIFY(!parts.session.token);
    QVERIFY(view->errorMessage.value().startsWith(u"Ошибка сохранения: "_s));
    QVERIFY(view->errorMessage.value().contains(QString::number(parts.secrets->failure)));
    QVERIFY(!view->offersFile);
    QCOMPARE(parts.secrets->items.keys(), leftInStore);
}

void TestAuthView::keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice_data() {
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QString>("words");
    QTest::newRow("gone") << SecretStatus::notAvailable << "There is no keyring on this desktop.";
    QTest::newRow("locked") << SecretStatus::unanswered << "The keyring is locked or does not answer.";
}

void TestAuthView::keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice() {
    QFETCH(qint32, status);
    QFETCH(QString, words);
    ClientParts parts;
    parts.secrets->failure = status;
    const auto view = form(parts);
    for (int round = 0; round < 2; ++round) {
        parts.http.answerNext(ScriptedAnswer::of(200, success()));
        parts.secrets->failingCall = parts.secrets->calls.size() + 1;
        submitAndWait(*view);
        QCOMPARE(view->errorMessage.value(), u"Ошибка сохранения: "_s + words);
        QVERIFY(view->offersFile);
        QVERIFY(!parts.secrets->mayUseFile);
    }
    view->keepInFile = true;
    parts.http.answerNext(ScriptedAnswer::of(200, success()));
    submitAndWait(*view);
    QVERIFY(parts.secrets->mayUseFile);
    QVERIFY(parts.session.isLoggedIn);
}

void TestAuthView::keyringThatOpensMeanwhileWins() {
    ClientParts parts;
    const auto view = form(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, success()).heldBack());
    view->submit();
    QTRY_COMPARE(parts.http.requests().size(), 1);
    parts.secrets->items = {
        {u"auth_token"_s, "stored"}, {u"auth_username"_s, "boris"}, {u"auth_user_id"_s, "9"}};
    Q_EMIT parts.session.keychain.store().opened();
    parts.http.release();
    QTRY_VERIFY(!view->isLoading);
    QCOMPARE(parts.session.token, u"stored"_s);
    QCOMPARE(parts.session.currentUserId.value(), 9);
    QCOMPARE(parts.secrets->items.value(u"auth_token"_s), "stored");
}

void TestAuthView::flippingTheModeClearsTheError() {
    ClientParts parts;
    const auto view = form(parts);
    view->errorMessage = u"x"_s;
    view->switchMode();
    QVERIFY(view->isRegistering);
    QVERIFY(view->errorMessage.value().isEmpty());
}

void TestAuthView::anAnswerAfterTheFormIsGoneIsHarmless() {
    ClientParts parts;
    auto view = form(parts);
    const std::weak_ptr<AuthView> watched = view;
    parts.http.answerNext(ScriptedAnswer::of(200, success()).heldBack());
    view->submit();
    QTRY_COMPARE(parts.http.requests().size(), 1);
    view.reset();
    QVERIFY(!watched.expired());
    parts.http.release();
    QTRY_VERIFY(watched.expired());
    QVERIFY(parts.session.isLoggedIn);
}

ORVANE_TEST_MAIN(TestAuthView)
#include "tst_auth_view.moc"

// SPDX-License-Identifier: MIT
#include "Application/AuthAnswer.h"
#include "Application/AuthView.h"
#include "Support/ClientParts.h"
#include "Support/HostileShapes.h"
#include "Support/TestMain.h"

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
    void theRequestIsExactlyTheForm();
    void anEmptyFieldSendsNothing();
    void everyFailureHasItsWords();
    void answersAreReadKeyByKey();
    void whatDoesNotComeBackIsANetworkErrorAndTheFormCanBeSentAgain();
    void anAddressThatIsNoUrlIsToldWithoutARequest();
    void aSuccessSignsInAndRegistersTheDevice();
    void whatTheAnswerDoesNotTellStays();
    void aStoreThatRefusesLeavesTheUserSignedOut();
    void keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice();
    void keyringThatOpensMeanwhileWins();
    void flippingTheModeClearsTheError();
    void anAnswerAfterTheFormIsGoneIsHarmless();
};

void TestAuthView::theRequestIsExactlyTheForm() {
    const struct {
        bool registering;
        const char *displayName, *target;
        bool named;
    } rows[] = {
        {false, "", "/api/auth/login", false},
        {false, "Anna", "/api/auth/login", false},
        {true, "Anna", "/api/auth/register", true},
        {true, "", "/api/auth/register", false},
    };
    for (const auto &row : rows) {
        const InRow named(QByteArray(row.target) + ' ' + row.displayName);
        ClientParts parts;
        // A token from before must not travel with a sign-in.
        parts.session.token = u"old"_s;
        const auto view = form(parts);
        view->isRegistering = row.registering;
        view->displayName = row.displayName;
        parts.http.answerNext(ScriptedAnswer::of(500));
        submitAndWait(*view);
        const RecordedRequest request = parts.http.requests().value(0);
        QCOMPARE(request.method, "POST");
        QCOMPARE(request.target, row.target);
        QCOMPARE(request.headers.value("content-type"), "application/json");
        QVERIFY(!request.headers.contains("authorization"));
        QJsonObject expected{{"username", " Anna "},
                             {"password", "pass\"word"},
                             {"device_id", parts.session.deviceId.value()},
                             {"device_name", "Mac"},
                             {"platform", "macos"}};
        if (row.named)
            expected.insert("display_name", "Anna");
        QCOMPARE(json::parseObject(request.body).value(), expected);
    }
}

void TestAuthView::anEmptyFieldSendsNothing() {
    ClientParts parts;
    const auto view = form(parts);
    for (const auto &[username, password] : {std::pair("", "p"), {"u", ""}, {"", ""}}) {
        view->username = username;
        view->password = password;
        view->submit();
        QVERIFY(!view->isLoading);
        QVERIFY(view->errorMessage.value().isEmpty());
    }
}

void TestAuthView::everyFailureHasItsWords() {
    const char *const badCredentials = R"({"error_code":"invalid_credentials"})";
    const QString credentials = u"Неверный логин или пароль"_s;
    const QString tooMany = u"Слишком много попыток. Повторите через минуту"_s;
    const QString check = u"Проверьте введённые данные"_s;
    const auto code = [](int n) { return u"Не удалось выполнить вход (код %1)"_s.arg(n); };
    const struct {
        bool registering;
        int status;
        const char *body;
        QString words;
    } rows[] = {
        {false, 401, badCredentials, credentials},
        {false, 401, "", code(401)},
        {false, 401, "<html>", code(401)},
        {true, 409, "{}", u"Этот логин уже занят"_s},
        {true, 409, badCredentials, credentials},
        {false, 409, "", code(409)},
        {false, 429, "", tooMany},
        {true, 429, badCredentials, credentials},
        {false, 400, "[]", check},
        {true, 400, "", check},
        {true, 500, R"({"error_code":7})", code(500)},
        {false, 204, "", code(204)},
        {false, 403, R"({"error_code":"no"})", code(403)},
        {false, 200, R"({"token":"t"})", u"Неверный ответ сервера"_s},
    };
    for (const auto &row : rows) {
        const InRow named(QByteArray::number(row.status) + row.body +
                          (row.registering ? " register" : " login"));
        ClientParts parts;
        const auto view = form(parts);
        view->isRegistering = row.registering;
        parts.http.answerNext(ScriptedAnswer::of(row.status, row.body));
        submitAndWait(*view);
        QCOMPARE(view->errorMessage.value(), row.words);
        QVERIFY(!parts.session.isLoggedIn);
        QVERIFY(parts.secrets->items.isEmpty());
    }
}

void TestAuthView::answersAreReadKeyByKey() {
    const auto number = [](std::optional<qint64> value) { return value ? QString::number(*value) : u"-"_s; };
    const auto read = [&](const QJsonObject &map) {
        const auto answer = AuthAnswer::parse(json::compact(map));
        return answer ? QStringList{answer->token,
                                    QString::number(answer->userId),
                                    answer->username,
                                    answer->displayName,
                                    answer->deviceId,
                                    number(answer->syncCursor),
                                    number(answer->maxDevices)}
                            .join(u'/')
                      : QString();
    };
    checkAgainstHostileShapes({
        {"whole",
         R"({"token":"t","user":{"id":1,"username":"u","display_name":"N"},"device":{"id":"d"},"sync_cursor":2,"max_devices":3})",
         read, u"t/1/u/N/d/2/3"_s,
         "token; user; user.id; user.username; device t/1/u/N//2/3; sync_cursor t/1/u/N/d/-/3; max_devices "
         "t/1/u/N/d/2/-; user.display_name t/1/u/u/d/2/3; device.id t/1/u/N//2/3"},
        {"an id as text", R"({"token":"t","user":{"id":"12","username":"u"}})", read, {}},
        {"an id with a fraction", R"({"token":"t","user":{"id":1.5,"username":"u"}})", read, {}},
        {"numbers as texts",
         R"({"token":"","user":{"id":1,"username":"u"},"device":[],"sync_cursor":"8","max_devices":0.5})",
         read, u"/1/u/u//-/-"_s},
    });
    for (const char *body : {"", "<html>", R"({"token":"t","user":{"id":1,)", "[1]"})
        QVERIFY2(!AuthAnswer::parse(body), body);
}

void TestAuthView::whatDoesNotComeBackIsANetworkErrorAndTheFormCanBeSentAgain() {
    const QString start = u"Ошибка сети: "_s;
    ClientParts parts;
    const QString nobody = std::make_unique<ScriptedHttpServer>()->base();
    const auto unheard = std::make_shared<AuthView>(parts.session, parts.api, nobody);
    unheard->username = u"x"_s;
    unheard->password = u"x"_s;
    submitAndWait(*unheard);
    QVERIFY(unheard->errorMessage.value().startsWith(start));
    QVERIFY(unheard->errorMessage.value().size() > start.size());

    const auto view = form(parts, 200);
    parts.http.answerNext(ScriptedAnswer::silence());
    view->submit();
    // While a request is under way a second press does nothing.
    view->submit();
    QTRY_VERIFY(!view->isLoading);
    QVERIFY(view->errorMessage.value().startsWith(start));
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

void TestAuthView::whatTheAnswerDoesNotTellStays() {
    for (const char *more : {"", R"(,"device":{"id":""})"}) {
        const InRow row(more);
        ClientParts parts;
        parts.session.adoptSyncCursor(55);
        const QString device = parts.session.deviceId;
        const auto view = form(parts);
        parts.http.answerNext(ScriptedAnswer::of(200, success(more)));
        submitAndWait(*view);
        QVERIFY(parts.session.isLoggedIn);
        QCOMPARE(parts.session.syncCursor.value(), 55);
        QCOMPARE(parts.session.maxDevices.value(), 4);
        QCOMPARE(parts.session.deviceId.value(), device);
    }
}

void TestAuthView::aStoreThatRefusesLeavesTheUserSignedOut() {
    const QStringList left[] = {{}, {u"auth_token"_s}, {u"auth_token"_s, u"auth_username"_s}};
    for (int failingAdd = 0; failingAdd < 3; ++failingAdd) {
        const InRow row(QByteArray::number(failingAdd));
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
        QCOMPARE(parts.secrets->items.keys(), left[failingAdd]);
    }
}

void TestAuthView::keyringThatIsAwayIsToldInWordsAndReplacedOnlyByChoice() {
    for (const auto &[status, words] :
         {std::pair(SecretStatus::notAvailable, "There is no keyring on this desktop."),
          {SecretStatus::unanswered, "The keyring is locked or does not answer."}}) {
        const InRow row(words);
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

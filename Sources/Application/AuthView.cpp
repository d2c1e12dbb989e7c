// SPDX-License-Identifier: MIT
#include "Application/AuthView.h"

#include "Application/AuthAnswer.h"
#include "Base/Json.h"
#include "Base/Task.h"
#include "Server/MessengerAPI.h"

using namespace Qt::StringLiterals;

namespace orvane {

AuthView::AuthView(MessengerSession &session, MessengerAPI &api, const QString &server, int requestTimeoutMs)
    : m_session(session)
    , m_api(api)
    , serverURL(server)
    , m_requestTimeoutMs(requestTimeoutMs) {}

void AuthView::submit() {
    if (username.value().isEmpty() || password.value().isEmpty() || isLoading)
        return;
    isLoading = true;
    errorMessage = QString();
    const QString path = isRegistering ? u"/api/auth/register"_s : u"/api/auth/login"_s;
    const QUrl url(serverURL + path, QUrl::StrictMode);
    if (!url.isValid()) {
        errorMessage = u"Неверный URL сервера"_s;
        isLoading = false;
        return;
    }
    QNetworkRequest prepared = httpRequest(url, m_requestTimeoutMs);
    prepared.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    launch(request(shared_from_this(), prepared, requestBody()));
}

void AuthView::switchMode() {
    isRegistering = !isRegistering;
    errorMessage = QString();
}

QCoro::Task<void> AuthView::request(Self self, QNetworkRequest prepared, QByteArray body) {
    const HttpAnswer answer = co_await awaitAnswer(sharedNetwork().post(prepared, body));
    self->complete(answer);
}

void AuthView::complete(const HttpAnswer &answer) {
    isLoading = false;
    // The keyring opened meanwhile and had a sign-in.
    if (m_session.isLoggedIn)
        return;
    if (!answer.transportError.isNull())
        errorMessage = u"Ошибка сети: "_s + answer.transportError;
    else if (answer.status == 0)
        errorMessage = u"Нет ответа от сервера"_s;
    else if (answer.status == 200 || answer.status == 201)
        handleAuthSuccess(answer.body);
    else
        errorMessage = localizedAuthError(answer.body, answer.status);
}

void AuthView::handleAuthSuccess(const QByteArray &data) {
    const auto answer = AuthAnswer::parse(data);
    if (!answer) {
        errorMessage = u"Неверный ответ сервера"_s;
        return;
    }
    if (!answer->deviceId.isEmpty() && answer->deviceId != m_session.deviceId.value())
        m_session.adoptDeviceId(answer->deviceId);
    try {
        if (keepInFile)
            m_session.keychain.store().allowFile();
        m_session.keychain.saveToken(answer->token);
        m_session.keychain.saveUserInfo(answer->username, answer->userId);
    } catch (const KeychainError &error) {
        errorMessage = u"Ошибка сохранения: "_s + localizedDescription(error);
        if (error.isKeyringAway())
            offersFile = true;
        return;
    }
    m_session.token = answer->token;
    m_session.currentUserId = answer->userId;
    m_session.currentUsername = answer->username;
    m_session.currentDisplayName = answer->displayName;
    m_session.isLoggedIn = true;
    if (answer->syncCursor)
        m_session.adoptSyncCursor(*answer->syncCursor);
    if (answer->maxDevices)
        m_session.maxDevices = *answer->maxDevices;
    launch(dropped(m_api.registerDevice(), "the chat list registers the device again"));
}

QString AuthView::localizedAuthError(const QByteArray &data, int statusCode) const {
    const auto body = json::readObject(data);
    const auto code = body ? json::text(*body, u"error_code") : std::nullopt;
    if (code == "invalid_credentials"_L1)
        return u"Неверный логин или пароль"_s;
    if (statusCode == 429)
        return u"Слишком много попыток. Повторите через минуту"_s;
    if (statusCode == 400)
        return u"Проверьте введённые данные"_s;
    if (statusCode == 409 && isRegistering)
        return u"Этот логин уже занят"_s;
    return u"Не удалось выполнить вход (код %1)"_s.arg(statusCode);
}

QByteArray AuthView::requestBody() const {
    QJsonObject body{{u"username"_s, username.value()}, {u"password"_s, password.value()}};
    if (isRegistering && !displayName.value().isEmpty())
        body.insert(u"display_name"_s, displayName.value());
    const auto device = m_session.devicePayload();
    for (auto entry = device.cbegin(); entry != device.cend(); ++entry)
        body.insert(entry.key(), entry.value());
    return json::compact(body);
}

} // namespace orvane

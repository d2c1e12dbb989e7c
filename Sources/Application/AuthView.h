// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Server/HttpAnswer.h"
#include "Session/MessengerSession.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

class MessengerAPI;

/// The form for sign-in and registration. It speaks to the server without a token, so not through
/// MessengerAPI. Main thread.
///
///     idle --submit--> loading --+--> idle with `errorMessage`
///                                +--> signed in, and the screen goes away
class AuthView : public QObject, public std::enable_shared_from_this<AuthView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application shows the sign-in form.")

    OBSERVABLE(QString, username)
    OBSERVABLE(QString, password)
    /// Sent with a registration only.
    OBSERVABLE(QString, displayName)
    OBSERVABLE(bool, isRegistering)
    OBSERVABLE(bool, isLoading)
    /// Null while there is nothing to say.
    OBSERVABLE(QString, errorMessage)
    /// The keyring has not taken a sign-in: the person may choose to keep it in a file.
    OBSERVABLE(bool, offersFile)
    /// The choice, for the next sign-in on.
    OBSERVABLE(bool, keepInFile)

public:
    /// Milliseconds without a byte after which a request is given up.
    static constexpr int timeoutMs = 20'000;

    AuthView(MessengerSession &session, MessengerAPI &api, const QString &serverURL,
             int requestTimeoutMs = timeoutMs);

    /// Sends the form. Does nothing while a field that is needed is empty or a request is under way.
    Q_INVOKABLE void submit();

    /// Flips between the two forms and clears the error.
    Q_INVOKABLE void switchMode();

private:
    using Self = std::shared_ptr<AuthView>;

    static QCoro::Task<void> request(Self self, QNetworkRequest prepared, QByteArray body);

    void complete(const HttpAnswer &answer);
    void handleAuthSuccess(const QByteArray &data);
    QString localizedAuthError(const QByteArray &data, int statusCode) const;
    QByteArray requestBody() const;

    MessengerSession &m_session;
    MessengerAPI &m_api;
    const QString serverURL;
    const int m_requestTimeoutMs;
};

} // namespace orvane

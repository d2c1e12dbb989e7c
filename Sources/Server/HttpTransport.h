// SPDX-License-Identifier: MIT
#pragma once

#include "Session/MessengerSession.h"

#include <QCoroTask>

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QNetworkRequest>
#include <QString>

namespace orvane {

struct MultipartBody;

/// The four primitives that every operation of MessengerAPI is made of. Main thread.
///
/// Each sends one request to `base` + `path` with the session's token of that moment and gives the body of
/// any answer below status 400. They throw ApiError "api" with the status from 400 on, and TransportError
/// when no whole answer came. A base and path that form no URL stop the process: the configuration is broken.
class HttpTransport {
public:
    using Headers = QMap<QString, QString>;

    HttpTransport(const QString &base, MessengerSession &session, int timeoutMs = 60'000);

    /// `path` starts with a slash and holds the query; nothing in it is encoded here.
    QCoro::Task<QByteArray> get(const QString &path);
    QCoro::Task<QByteArray> post(const QString &path, const QJsonObject &body,
                                 const Headers &additionalHeaders = {});
    QCoro::Task<QByteArray> patch(const QString &path, const QJsonObject &body);
    QCoro::Task<QByteArray> del(const QString &path, const QJsonObject &body);

protected:
    enum class Authorisation { token, none };

    MessengerSession &session() { return m_session; }

    /// A POST like the primitives'.
    QCoro::Task<QByteArray> upload(const QString &path, const MultipartBody &body,
                                   Authorisation authorisation, const Headers &additionalHeaders = {});

private:
    QNetworkRequest request(const QString &path, Authorisation authorisation = Authorisation::token) const;
    QNetworkRequest jsonRequest(const QString &path) const;

    QString m_base;
    MessengerSession &m_session;
    int m_timeoutMs;
};

} // namespace orvane

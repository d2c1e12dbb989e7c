// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>

#include <QCoroTask>

namespace orvane {

/// Bytes of a body, unpacked; no answer of a home server comes near it.
constexpr qint64 largestAnswer = 64LL * 1024 * 1024;

/// What came back for one HTTP request.
struct HttpAnswer {
    /// 0 when nothing that speaks HTTP answered.
    int status = 0;
    /// As far as it arrived; empty for a redirect that was not followed.
    QByteArray body;
    /// Words for a failure below HTTP (no connection, time-out, an answer cut short or too large); null when
    /// there was none.
    QString transportError;
};

/// The network access that all requests of the process share; it repeats nothing that acts. Main thread.
QNetworkAccessManager &sharedNetwork();

/// A request for `url` that gives up after `timeoutMs` without a byte and follows redirects within one origin
/// only, so that a token never travels to another host.
QNetworkRequest httpRequest(const QUrl &url, int timeoutMs);

/// Waits for the reply and frees it; one whose body goes over `limit` is given up as it comes. Never throws.
/// Main thread.
QCoro::Task<HttpAnswer> awaitAnswer(QNetworkReply *reply, qint64 limit = largestAnswer);

} // namespace orvane

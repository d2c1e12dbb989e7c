// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QJsonObject>
#include <QStringList>
#include <QUrlQuery>

#include <exception>

namespace orvane::homeserver {

// One request as the operations see it.
struct Request {
    QByteArray method;    // upper case
    QStringList segments; // of the path, percent-decoded one by one
    QUrlQuery query;
    QByteArray token; // of the bearer authorisation, or empty
    QByteArray idempotencyKey;
    QByteArray contentType;
    QByteArray body;
    QHostAddress address;
};

// One answer. Everything but a download is a JSON object.
struct Answer {
    int status = 200;
    QByteArray body;
    QByteArray mimeType = "application/json";

    Answer() = default;
    Answer(const QJsonObject &object, int code = 200);
    Answer(QByteArray bytes, QByteArray type);

    static Answer error(int status, const QByteArray &code);
};

// Thrown by an operation that will not act: the status and the `error_code` of the answer.
class Refusal : public std::exception {
public:
    Refusal(int status, const char *code)
        : m_status(status)
        , m_code(code) {}

    const char *what() const noexcept override { return m_code; }
    Answer answer() const { return Answer::error(m_status, m_code); }

private:
    int m_status;
    const char *m_code;
};

[[noreturn]] inline void refuseBadRequest() {
    throw Refusal(400, "bad_request");
}
[[noreturn]] inline void refuseNotFound() {
    throw Refusal(404, "not_found");
}
[[noreturn]] inline void refuseForbidden() {
    throw Refusal(403, "forbidden");
}

} // namespace orvane::homeserver

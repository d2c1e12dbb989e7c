// SPDX-License-Identifier: MIT
#include "Server/NetworkAccess.h"

#include <QIODevice>
#include <QNetworkCookieJar>
#include <QNetworkReply>

#include <utility>

namespace orvane {

namespace {

/// A body that can be read again for the sake of a redirect, but not for a second attempt: only the first
/// comes after an answer.
class UnrepeatableBody : public QIODevice {
public:
    explicit UnrepeatableBody(QIODevice *bytes)
        : m_bytes(bytes) {
        open(ReadOnly | Unbuffered);
    }

    void follow(QNetworkReply *reply) {
        setParent(reply);
        connect(reply, &QNetworkReply::metaDataChanged, this, [this] { m_answered = true; });
    }

    qint64 size() const override { return m_bytes->size(); }
    bool reset() override {
        if (pos() > 0 && !std::exchange(m_answered, false))
            return false;
        return QIODevice::reset() && m_bytes->reset();
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override { return m_bytes->read(data, maxSize); }
    qint64 writeData(const char * /*data*/, qint64 /*maxSize*/) override { return -1; }

private:
    QIODevice *m_bytes;
    bool m_answered = false;
};

} // namespace

NetworkAccess::NetworkAccess() {
    m_fresh.setCookieJar(cookieJar());
    cookieJar()->setParent(this);
}

QNetworkReply *NetworkAccess::createRequest(Operation operation, const QNetworkRequest &request,
                                            QIODevice *body) {
    if (!body || request.hasRawHeader("Idempotency-Key"))
        return QNetworkAccessManager::createRequest(operation, request, body);
    QNetworkRequest once(request);
    once.setRawHeader("Connection", "close");
    // There every request shares one connection, and the header above has no meaning.
    once.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    auto *unrepeatable = new UnrepeatableBody(body);
    QNetworkReply *reply = m_fresh.createRequest(operation, once, unrepeatable);
    unrepeatable->follow(reply);
    return reply;
}

} // namespace orvane

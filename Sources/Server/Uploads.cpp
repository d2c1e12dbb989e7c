// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Base/FreshId.h"
#include "Server/ApiError.h"
#include "Server/MultipartBody.h"
#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

#include <QCoroFuture>
#include <QFile>
#include <QtConcurrentRun>

// The three multipart uploads.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

namespace {

struct ReadFile {
    QByteArray bytes;
    QString error;
};

ReadFile readWhole(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, file.errorString()};
    ReadFile read{file.readAll(), {}};
    if (file.error() != QFileDevice::NoError)
        read.error = file.errorString();
    return read;
}

// A disk may be slow: the window goes on meanwhile.
QCoro::Task<QByteArray> bytesOf(QUrl fileURL) {
    const QString path = fileURL.toLocalFile();
    const ReadFile read = co_await QtConcurrent::run(&readWhole, path);
    if (!read.error.isNull())
        throw FileError(read.error);
    co_return read.bytes;
}

QString longBoundary() {
    return u"Boundary-"_s + freshId();
}

} // namespace

QCoro::Task<QJsonObject> MessengerAPI::sendVoiceMessage(QString chatID, QUrl fileURL,
                                                        QString idempotencyKey) {
    const QByteArray bytes = co_await bytesOf(fileURL);
    const MultipartBody body{longBoundary(), chatID, u"voice.m4a"_s, "audio/mp4", bytes};
    const Headers key{{u"Idempotency-Key"_s, idempotencyKey}};
    QCoro::Task<QByteArray> sent =
        upload(messenger(u"/chats/%1/voice-messages", chatID), body, Authorisation::token, key);
    const QJsonObject answer = co_await mapOrEmpty(std::move(sent));
    const auto message = json::object(answer, u"message");
    if (!message)
        throw ApiError::api(500, u"Invalid voice response"_s);
    co_return *message;
}

QCoro::Task<QByteArray> MessengerAPI::downloadVoice(const QString &chatID, const QString &voiceID) {
    return get(messenger(u"/voice/%1/%2.m4a", chatID, voiceID));
}

QCoro::Task<std::optional<QJsonObject>> MessengerAPI::uploadFile(QString chatID, QUrl fileURL) {
    const QByteArray bytes = co_await bytesOf(fileURL);
    const MultipartBody body{longBoundary(), chatID, fileURL.fileName(), "application/octet-stream", bytes};
    const QByteArray answer = co_await upload(messenger(u"/files/upload"), body, Authorisation::none);
    co_return json::parseObject(answer);
}

QCoro::Task<QJsonObject> MessengerAPI::transcribeVoice(QUrl fileURL) {
    const QByteArray bytes = co_await bytesOf(fileURL);
    const MultipartBody body{freshId(), std::nullopt, fileURL.fileName(), "audio/m4a", bytes};
    QCoro::Task<QByteArray> sent = upload(messenger(u"/voice/transcribe"), body, Authorisation::token);
    co_return co_await mapOr500(std::move(sent));
}

} // namespace orvane

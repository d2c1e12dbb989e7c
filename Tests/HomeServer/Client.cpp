// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace orvane::homeserver::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10'000; // ms

QByteArray bytesOf(const QJsonObject &object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

QJsonValue valueAt(const QJsonValue &value, const char *path) {
    QJsonValue found = value;
    for (const QString &step : QString::fromLatin1(path).split(u'.'))
        found = found.isArray() ? QJsonValue(found[step.toInt()]) : QJsonValue(found[step]);
    return found;
}

QJsonValue Reply::at(const char *path) const {
    return valueAt(json, path);
}

Site::Site(const std::function<void(Options &)> &adjust) {
    m_options.dataFolder = m_folder.path();
    m_options.botDelay = 0;
    m_options.clock = [this] { return now; };
    if (adjust)
        adjust(m_options);
    restart();
}

void Site::restart() {
    m_server = std::make_unique<HomeServer>(m_options);
    if (!m_server->start())
        qFatal("the server did not start: %s", qPrintable(m_server->errorText()));
}

QNetworkReply *Site::start(const QByteArray &method, const QString &path, const QByteArray &body,
                           const Headers &headers) {
    const QString whole = path.startsWith(u'/') ? path : u"/api/messenger/"_s + path;
    QNetworkRequest request(QUrl(m_server->httpUrl().toString() + whole));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    for (const auto &[name, value] : headers)
        request.setRawHeader(name, value);
    return m_network.sendCustomRequest(request, method, body);
}

Reply Site::send(const QByteArray &method, const QString &path, const QByteArray &body,
                 const Headers &headers) {
    return finish(start(method, path, body, headers));
}

Reply finish(QNetworkReply *reply) {
    QSignalSpy finished(reply, &QNetworkReply::finished);
    if (!reply->isFinished() && !finished.wait(patience))
        qFatal("no end of a request");
    Reply result;
    result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.body = reply->readAll();
    result.json = QJsonDocument::fromJson(result.body).object();
    reply->deleteLater();
    return result;
}

Person::Person(Site &site, const QString &username, const QString &device)
    : m_site(&site) {
    take(site.send(
        "POST", u"/api/auth/register"_s,
        bytesOf({{"username"_L1, username}, {"password"_L1, "secret-1"_L1}, {"device_id"_L1, device}})));
}

Person Person::signIn(Site &site, const QString &username, const QString &device) {
    Person person(site);
    person.take(site.send(
        "POST", u"/api/auth/login"_s,
        bytesOf({{"username"_L1, username}, {"password"_L1, "secret-1"_L1}, {"device_id"_L1, device}})));
    return person;
}

void Person::take(const Reply &reply) {
    token = reply.json["token"_L1].toString();
    id = reply.json["user"_L1]["id"_L1].toInteger();
    if (token.isEmpty())
        qFatal("no sign-in: %d %s", reply.status, reply.body.constData());
}

Reply Person::send(const QByteArray &method, const QString &path, const QByteArray &body, Headers headers) {
    headers.append({"Authorization", "Bearer " + token.toUtf8()});
    return m_site->send(method, path, body, headers);
}

Reply Person::post(const QString &path, const QJsonObject &body, const Headers &headers) {
    return send("POST", path, bytesOf(body), headers);
}

QNetworkReply *Person::start(const QByteArray &method, const QString &path, const QJsonObject &body,
                             Headers headers) {
    headers.append({"Authorization", "Bearer " + token.toUtf8()});
    return m_site->start(method, path, bytesOf(body), headers);
}

QString Person::say(const QString &chat, const QString &text) {
    const Reply reply = post(u"chats/%1/messages"_s.arg(chat),
                             {{"user_id"_L1, id}, {"content"_L1, text}, {"type"_L1, "text"_L1}});
    return reply.json["message"_L1]["id"_L1].toString();
}

QString Person::directChatWith(qint64 other) {
    return post(u"chats"_s, {{"user_id"_L1, id},
                             {"type"_L1, "direct"_L1},
                             {"title"_L1, QJsonValue()},
                             {"participants"_L1, QJsonArray{other}}})
        .json["chat"_L1]["id"_L1]
        .toString();
}

QString Person::groupWith(const QList<qint64> &others) {
    QJsonArray list;
    for (const qint64 other : others)
        list.append(other);
    return post(u"chats"_s, {{"user_id"_L1, id},
                             {"type"_L1, "group"_L1},
                             {"title"_L1, "Group"_L1},
                             {"participants"_L1, list}})
        .json["chat"_L1]["id"_L1]
        .toString();
}

QJsonArray Person::messages(const QString &chat, const QString &query) {
    return get(u"chats/%1/messages%2"_s.arg(chat, query)).json["messages"_L1].toArray();
}

QJsonObject Person::chat(const QString &chatId) {
    const QJsonArray chats = get(u"chats"_s).json["chats"_L1].toArray();
    const auto found = std::ranges::find_if(chats, [&](const QJsonValue &c) { return c["id"_L1] == chatId; });
    return found == chats.end() ? QJsonObject() : (*found).toObject();
}

qint64 robotId(Person &person, const QString &username) {
    return person.get(u"users/search?q="_s + username).json["users"_L1][0]["id"_L1].toString().toLongLong();
}

Listener::Listener(Site &site) {
    QObject::connect(&socket, &QWebSocket::textMessageReceived, &socket, [this](const QString &text) {
        events.append(QJsonDocument::fromJson(text.toUtf8()).object());
    });
    socket.open(site.server().webSocketUrl());
    if (!QTest::qWaitFor([this] { return isOpen(); }, patience))
        qFatal("no event socket");
}

Listener::Listener(Site &site, const Person &person)
    : Listener(site) {
    send({{"type"_L1, "auth"_L1}, {"token"_L1, person.token}});
    has({});
}

void Listener::send(const QJsonObject &frame) {
    socket.sendTextMessage(QString::fromUtf8(bytesOf(frame)));
}

QJsonObject Listener::next(const QString &type) {
    const auto find = [&] {
        return std::ranges::find_if(events,
                                    [&](const QJsonObject &event) { return event["type"_L1] == type; });
    };
    if (!QTest::qWaitFor([&] { return find() != events.end(); }, patience / 2))
        return {};
    return events.takeAt(find() - events.begin());
}

bool Listener::has(const QString &type) {
    // The server answers a ping after all that it sent before.
    send({{"type"_L1, "ping"_L1}});
    if (next(u"pong"_s).isEmpty())
        qFatal("the event socket does not answer");
    return std::ranges::any_of(events, [&](const QJsonObject &event) { return event["type"_L1] == type; });
}

} // namespace orvane::homeserver::test

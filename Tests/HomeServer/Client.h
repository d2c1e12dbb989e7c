// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/HomeServer.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QWebSocket>

#include <functional>
#include <memory>

// A server on a folder of its own, and people who talk to it over real connections.
namespace orvane::homeserver::test {

using namespace Qt::StringLiterals;

struct Reply {
    int status = 0; // 0: no answer came
    QJsonObject json;
    QByteArray body;

    QString error() const { return text("error_code"); }

    // What stands at a path of keys and places in lists, like "users.0.status".
    QJsonValue at(const char *path) const;
    QString text(const char *path) const { return at(path).toString(); }
    qsizetype count(const char *path) const { return at(path).toArray().size(); }
};

QJsonValue valueAt(const QJsonValue &value, const char *path);

using Headers = QList<std::pair<QByteArray, QByteArray>>;

class Site {
public:
    explicit Site(const std::function<void(Options &)> &adjust = {});

    HomeServer &server() { return *m_server; }
    double now = 1'700'000'000; // the server's clock

    // Stops the server and starts another one on the same data.
    void restart();

    QNetworkReply *start(const QByteArray &method, const QString &path, const QByteArray &body = {},
                         const Headers &headers = {});
    Reply send(const QByteArray &method, const QString &path, const QByteArray &body = {},
               const Headers &headers = {});

    QString dataFolder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    Options m_options;
    std::unique_ptr<HomeServer> m_server;
    QNetworkAccessManager m_network;
};

Reply finish(QNetworkReply *reply);

// One signed-in device.
class Person {
public:
    // Registers `username` with the password "secret-1".
    Person(Site &site, const QString &username, const QString &device = u"device-1"_s);

    // The same account on another device.
    static Person signIn(Site &site, const QString &username, const QString &device);

    Reply get(const QString &path) { return send("GET", path); }
    Reply post(const QString &path, const QJsonObject &body = {}, const Headers &headers = {});
    Reply send(const QByteArray &method, const QString &path, const QByteArray &body = {},
               Headers headers = {});
    QNetworkReply *start(const QByteArray &method, const QString &path, const QJsonObject &body,
                         Headers headers);

    // Posts a text and returns the message's id.
    QString say(const QString &chat, const QString &text);
    QString directChatWith(const Person &other) { return directChatWith(other.id); }
    QString directChatWith(qint64 other);
    QString groupWith(const QList<qint64> &others);
    QJsonArray messages(const QString &chat, const QString &query = {});
    QJsonObject chat(const QString &chatId);

    qint64 id = 0;
    QString token;

private:
    explicit Person(Site &site)
        : m_site(&site) {}
    void take(const Reply &reply);

    Site *m_site;
};

// Where everybody meets.
inline QString lobby() {
    return u"lobby"_s;
}
qint64 robotId(Person &person, const QString &username);

// An event socket with what came over it.
class Listener {
public:
    // Connects without a word.
    explicit Listener(Site &site);
    // Connects, authenticates and waits until that is done.
    Listener(Site &site, const Person &person);

    QWebSocket socket;
    QList<QJsonObject> events;

    void send(const QJsonObject &frame);
    bool isOpen() const { return socket.state() == QAbstractSocket::ConnectedState; }

    // The first event of this type, which is taken out of `events`; empty when none comes in 5 s.
    QJsonObject next(const QString &type);
    // After everything that was on its way: whether an event of this type has come.
    bool has(const QString &type);
};

// Three people; the first two share a group besides the Lobby.
struct Company {
    explicit Company(const std::function<void(Options &)> &adjust = {})
        : site(adjust) {}

    Site site;
    Person anna{site, u"anna"_s};
    Person bert{site, u"bert"_s};
    Person carl{site, u"carl"_s};
    QString chat = anna.groupWith({bert.id});
};

} // namespace orvane::homeserver::test

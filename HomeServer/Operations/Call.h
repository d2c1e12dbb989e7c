// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Message.h"
#include "HomeServer/Operations/Services.h"

#include <QFuture>
#include <QHash>
#include <QList>

#include <functional>

namespace orvane::homeserver {

// Whom a token stands for. A default one is nobody.
struct Caller {
    qint64 userId = 0;
    QString deviceId;
};

// One unit of work on the database. What the world gets to know of it waits until it is committed.
class Work {
public:
    explicit Work(Services &everything)
        : services(everything) {}

    Services &services;

    Database &database() { return services.database; }

    // Sends an event to every socket of these users, but none to the device of `except`.
    void tell(const QList<qint64> &users, const QJsonObject &event, const Caller &except = {});

    void afterwards(std::function<void()> step) { m_afterwards.append(std::move(step)); }

    // Runs `act` as one piece of a transaction; when that is on the disk, what it left for afterwards, and
    // then `done`. Should it not get there, `done` alone is called, with false. What `act` throws passes
    // through, with the piece undone and nothing told.
    void run(const std::function<void()> &act, const std::function<void(bool committed)> &done = {});

private:
    QList<std::function<void()>> m_afterwards;
};

// A unit of work that a request, or a frame of an event socket, asks for.
class Call : public Work {
public:
    using Work::Work;

    Request request;
    QJsonObject body; // of the request, or the whole frame
    Caller caller;
    QHash<QString, QString> parts; // what the placeholders of the path stand for

    QString part(const char *name) const { return parts.value(QString::fromLatin1(name)); }
    QString queryText(const char *name) const;
};

using Operation = std::function<Answer(Call &)>;

// An operation whose first half, outside a transaction, takes long: the future brings its second half.
using SlowOperation = std::function<QFuture<Operation>(Call &)>;

} // namespace orvane::homeserver

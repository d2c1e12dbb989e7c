// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace orvane::homeserver {

// What goes wrong with the requests to come; empty in a server that people use. A rule holds for the next
// `count` requests whose method equals and whose path begins with what it says (an empty method fits all).
// The oldest rule that fits is taken, one rule a request. A client's HTTP library may itself send a request
// again whose connection was closed, and uses up the count with that. Belongs to the server's thread.
class FaultScript {
public:
    enum class Kind {
        Delay,      // act and answer after `milliseconds`
        Drop,       // never act, close the connection
        Duplicate,  // act twice, give the second answer
        AnswerWith, // never act, give `status` and `body`
        LoseAnswer, // act, then close the connection without an answer
    };

    struct Fault {
        Kind kind = Kind::Delay;
        int milliseconds = 0;
        int status = 200;
        QByteArray body;
    };

    void delay(const QByteArray &method, const QString &pathPrefix, int milliseconds, int count = 1);
    void drop(const QByteArray &method, const QString &pathPrefix, int count = 1);
    void duplicate(const QByteArray &method, const QString &pathPrefix, int count = 1);
    void answerWith(const QByteArray &method, const QString &pathPrefix, int status, const QByteArray &body,
                    int count = 1);
    void loseAnswer(const QByteArray &method, const QString &pathPrefix, int count = 1);
    void clear() { m_rules.clear(); }

    // The fault of this request, which uses up one of its rule's count.
    std::optional<Fault> take(const QByteArray &method, const QString &path);

private:
    struct Rule {
        QByteArray method;
        QString pathPrefix;
        Fault fault;
        int count = 1;
    };

    QList<Rule> m_rules;
};

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QObject>

namespace orvane::homeserver {

struct Services;

// Gives the robots their turn: one that is alone with somebody in a direct chat starts typing, and answers
// after the configured delay with a real message. Answers that are due when the server stops are lost.
class RobotRunner : public QObject {
    Q_OBJECT

public:
    explicit RobotRunner(Services &services)
        : m_services(services) {}

    // A message was posted; `record` is its wire form.
    void notice(const QJsonObject &record);

private:
    void startTyping(const QString &chatId, qint64 robot);
    void answer(const QJsonObject &record, qint64 robot);

    Services &m_services;
};

} // namespace orvane::homeserver

// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/FaultScript.h"
#include "HomeServer/Options.h"

#include <QObject>
#include <QUrl>

#include <memory>

namespace orvane::homeserver {

// A whole home server inside this process: REST on one port, events on the other, one database in its data
// folder. It works on the thread that made it and needs that thread's event loop. Constructing does nothing;
// after stop() it can be started again, on the same data.
class HomeServer : public QObject {
    Q_OBJECT

public:
    explicit HomeServer(Options options, QObject *parent = nullptr);
    ~HomeServer() override;

    // False when the data folder can't be used or a port not be taken; errorText() then says why.
    bool start();
    void stop();
    QString errorText() const { return m_errorText; }

    // Of the running server, without a trailing slash, and the complete one for events.
    QUrl httpUrl() const;
    QUrl webSocketUrl() const;

    // Scripted faults: of the requests to come, and of the event sockets that a user has now.
    FaultScript &faults() { return m_faults; }
    void closeEventSockets(qint64 userId);
    void freezeEventSockets(qint64 userId);
    void thawEventSockets(qint64 userId);

private:
    struct Running;

    void open();

    Options m_options;
    FaultScript m_faults;
    QString m_errorText;
    std::unique_ptr<Running> m_running;
};

} // namespace orvane::homeserver

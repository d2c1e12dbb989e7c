// SPDX-License-Identifier: MIT
#include "HomeServer/HomeServer.h"

#include "HomeServer/Accounts/AccountOperations.h"
#include "HomeServer/Accounts/Devices.h"
#include "HomeServer/Accounts/Sessions.h"
#include "HomeServer/Accounts/SignIn.h"
#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Ai/AiOperations.h"
#include "HomeServer/Ai/ModelEndpoint.h"
#include "HomeServer/Chats/ChatOperations.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Chats/FolderOperations.h"
#include "HomeServer/Chats/InviteOperations.h"
#include "HomeServer/Chats/MessageActions.h"
#include "HomeServer/Chats/MessageOperations.h"
#include "HomeServer/Chats/PollVotes.h"
#include "HomeServer/Chats/SearchOperations.h"
#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Extensions/BotOperations.h"
#include "HomeServer/Extensions/SkillOperations.h"
#include "HomeServer/Federation/FederationOperations.h"
#include "HomeServer/Federation/ServerName.h"
#include "HomeServer/Files/FileOperations.h"
#include "HomeServer/Files/FileStore.h"
#include "HomeServer/Files/LostFiles.h"
#include "HomeServer/Http/HttpFront.h"
#include "HomeServer/Local/PresenceOperations.h"
#include "HomeServer/Local/SignalRelay.h"
#include "HomeServer/Operations/Dispatcher.h"
#include "HomeServer/Operations/Idempotency.h"
#include "HomeServer/People/ContactOperations.h"
#include "HomeServer/People/ContactRequests.h"
#include "HomeServer/People/KeyOperations.h"
#include "HomeServer/Robots/RobotAccounts.h"
#include "HomeServer/Robots/RobotRunner.h"
#include "HomeServer/Security/Brakes.h"
#include "HomeServer/Security/HashQueue.h"
#include "HomeServer/Security/LoginThrottle.h"
#include "HomeServer/Store/Commits.h"
#include "HomeServer/Store/Database.h"
#include "HomeServer/Store/FolderLock.h"

#include <QDir>
#include <QNetworkAccessManager>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// The whole interface. Whoever adds to it announces here what clients can't take for granted.
Router everyRoute() {
    Router router;
    addSignIn(router);
    addAccount(router);
    addDevices(router);
    addContacts(router);
    addContactRequests(router);
    addKeys(router);
    addChats(router);
    addMessages(router);
    addMessageActions(router);
    addPollVotes(router);
    addSearch(router);
    addFolders(router);
    addInvites(router);
    addFiles(router);
    addFederation(router);
    addPresence(router);
    addSignals(router);
    addBots(router);
    addSkills(router);
    addAi(router);
    addRobots(router);
    return router;
}

QUrl urlOf(const QString &scheme, const QHostAddress &address, quint16 port) {
    QUrl url;
    url.setScheme(scheme);
    url.setHost(address.toString());
    url.setPort(port);
    return url;
}

} // namespace

// Everything that exists only between start() and stop(), in the order in which it needs each other.
struct HomeServer::Running {
    Running(const Options &options, FaultScript &faults)
        : lock(options.dataFolder)
        , database(QDir(options.dataFolder).filePath(u"homeserver.sqlite"_s))
        , events([this](const QByteArray &token) { return callerOf(services, token); }, options)
        , robots(services)
        , files(QDir(options.dataFolder).filePath(u"files"_s), options.maxStoredBytes)
        , model(options.aiUrl, network)
        , services{options,           database, events,
                   throttle,          robots,   files,
                   network,           model,    [this] { return httpUrl().toString(); },
                   hashing,           visitors, commits,
                   router.features(), brakes}
        , dispatcher(router, services)
        , http([this](const Request &request) { return dispatcher.admit(request); },
               [this](const Request &request, const HttpFront::Finish &finish) {
                   dispatcher.handle(request, finish);
               },
               faults, HttpFront::Limits{options.connections, options.patience}) {
        Work work(services);
        work.run([&] {
            fixServerName(database);
            createBuiltIns(work);
            forgetOldKeys(database, services.now());
            dropLostFiles(work);
            dropStrayBytes(work);
        });
        commits.flush();
        QObject::connect(&events, &EventHub::frameReceived, &dispatcher, &Dispatcher::handleFrame);
        QObject::connect(&events, &EventHub::presenceChanged, &dispatcher,
                         [this](qint64 userId, bool online) {
                             for (const qint64 other : acquaintances(database, userId))
                                 events.send(other, statusEvent(userId, online));
                         });
    }

    ~Running() {
        http.close();
        QObject::disconnect(&events, nullptr, nullptr, nullptr);
        events.stop();
        hashing.waitForDone();
    }

    Q_DISABLE_COPY_MOVE(Running)

    QUrl httpUrl() const { return urlOf(u"http"_s, services.options.address, http.port()); }

    FolderLock lock;
    HashQueue hashing;
    Database database;
    Commits commits{database};
    Visitors visitors{database};
    LoginThrottle throttle{database, visitors};
    Brakes brakes;
    EventHub events;
    RobotRunner robots;
    FileStore files;
    QNetworkAccessManager network;
    ModelEndpoint model;
    const Router router = everyRoute();
    Services services;
    Dispatcher dispatcher;
    HttpFront http;
};

HomeServer::HomeServer(Options options, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options)) {}

HomeServer::~HomeServer() {
    stop();
}

bool HomeServer::start() {
    stop();
    try {
        open();
        return true;
    } catch (const std::exception &fault) {
        m_errorText = QString::fromUtf8(fault.what());
        m_running.reset();
        return false;
    }
}

void HomeServer::open() {
    m_running = std::make_unique<Running>(m_options, m_faults);
    if (!m_running->http.listen(m_options.address, m_options.httpPort))
        throw std::runtime_error("the port for requests: " + m_running->http.errorText().toStdString());
    if (!m_running->events.listen(m_options.address, m_options.webSocketPort))
        throw std::runtime_error("the port for events: " + m_running->events.errorText().toStdString());
}

void HomeServer::stop() {
    m_running.reset();
}

QUrl HomeServer::httpUrl() const {
    return m_running->httpUrl();
}

QUrl HomeServer::webSocketUrl() const {
    QUrl url = urlOf(u"ws"_s, m_options.address, m_running->events.port());
    url.setPath(u"/"_s);
    return url;
}

void HomeServer::closeEventSockets(qint64 userId) {
    m_running->events.close(userId);
}

void HomeServer::freezeEventSockets(qint64 userId) {
    m_running->events.setFrozen(userId, true);
}

void HomeServer::thawEventSockets(qint64 userId) {
    m_running->events.setFrozen(userId, false);
}

} // namespace orvane::homeserver

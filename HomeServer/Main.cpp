// SPDX-License-Identifier: MIT
#include "HomeServer/HomeServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace orvane::homeserver;
using namespace Qt::StringLiterals;

namespace {

int signalSockets[2];

// Only what is allowed in a signal handler: the event loop does the rest.
void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(signalSockets[0], &byte, 1);
}

void quitOnSignals(QCoreApplication &application) {
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, signalSockets) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalSockets[1], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    std::signal(SIGTERM, onSignal);
    std::signal(SIGINT, onSignal);
}

// Each connection is a descriptor, and the usual limit is that of an interactive shell.
void takeAllDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

int fail(const QString &reason) {
    std::fprintf(stderr, "orvanetalk-homeserver: %s\n", qPrintable(reason));
    return 1;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"orvanetalk-homeserver"_s);

    const QCommandLineOption listen(u"listen"_s, u"Address to listen on."_s, u"address"_s, u"127.0.0.1"_s);
    const QCommandLineOption httpPort(u"http-port"_s, u"Port for requests, 0 for a free one."_s, u"port"_s,
                                      u"0"_s);
    const QCommandLineOption wsPort(u"ws-port"_s, u"Port for events, 0 for a free one."_s, u"port"_s, u"0"_s);
    const QCommandLineOption data(u"data"_s, u"Folder for the database and uploads."_s, u"folder"_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"A home server for OrvaneTalk"_s);
    parser.addHelpOption();
    const QCommandLineOption closed(u"closed-registration"_s, u"Nobody makes an account."_s);
    const QCommandLineOption invited(u"invited-registration"_s,
                                     u"Only who has an invitation to a chat makes an account."_s);
    const QCommandLineOption proxy(
        u"trusted-proxy"_s, u"A proxy whose X-Forwarded-For counts; may be given again."_s, u"address"_s);
    const QCommandLineOption localPeers(u"allow-local-peers"_s,
                                        u"Let users have other servers at private addresses asked."_s);
    parser.addOptions({listen, httpPort, wsPort, data, closed, invited, proxy, localPeers});
    parser.process(application);

    Options options;
    if (!options.address.setAddress(parser.value(listen)))
        return fail(u"not an address: "_s + parser.value(listen));
    bool httpOk = false;
    bool wsOk = false;
    options.httpPort = parser.value(httpPort).toUShort(&httpOk);
    options.webSocketPort = parser.value(wsPort).toUShort(&wsOk);
    if (!httpOk || !wsOk)
        return fail(u"a port is a number from 0 to 65535"_s);
    options.dataFolder = parser.value(data);
    if (options.dataFolder.isEmpty())
        return fail(u"--data FOLDER is needed"_s);
    for (const QString &address : parser.values(proxy)) {
        options.connections.proxies.append(QHostAddress(address));
        if (options.connections.proxies.last().isNull())
            return fail(u"not an address: "_s + address);
    }
    options.registration = parser.isSet(closed)    ? Registration::Closed
                           : parser.isSet(invited) ? Registration::Invited
                                                   : Registration::Open;
    options.allowLocalPeers = parser.isSet(localPeers);
    options.aiUrl = qEnvironmentVariable("ORVANE_AI_URL");

    umask(S_IRWXG | S_IRWXO);
    takeAllDescriptors();
    quitOnSignals(application);
    HomeServer server(options);
    if (!server.start())
        return fail(server.errorText());
    std::printf("listening http=%s ws=%s\n", qPrintable(server.httpUrl().toString()),
                qPrintable(server.webSocketUrl().toString()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}

// SPDX-License-Identifier: MIT
#include "LocalNetwork/MessengerP2PLanService.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>
#include <vector>

// One machine of a local network: the real service of one user. Commands are JSON lines on standard input,
// and each change prints the whole state as one on standard output.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

void say(const QJsonObject &line) {
    std::puts(json::compact(line).constData());
    std::fflush(stdout);
}

QJsonArray listOf(const QSet<QString> &ids) {
    QStringList sorted(ids.begin(), ids.end());
    sorted.sort();
    return QJsonArray::fromStringList(sorted);
}

struct Host {
    Host(const QString &server, const QString &token, qint64 id, int heartbeat)
        : api(server, signedIn.session)
        , service({signedIn.session, api, socket, channel, interfaces,
                   std::make_unique<UserDefaults>(signedIn.folder.filePath(u"defaults.ini"_s)),
                   std::chrono::milliseconds(heartbeat)}) {
        signedIn.session.token = token;
        signedIn.session.currentUserId = id;
        const auto tell = [this] { report(); };
        QObject::connect(&channel, &MessengerP2PDataChannel::connectedPeerIdsChanged, tell);
        QObject::connect(&service, &MessengerP2PLanService::linkedPeerIdsChanged, tell);
        QObject::connect(&NotificationCentre::shared(), &NotificationCentre::posted,
                         [this](const QString &, const QJsonObject &info) {
                             messages.append(info);
                             report();
                         });
        watches.push_back(service.isEnabled.addNotifier(tell));
        watches.push_back(service.peers.addNotifier(tell));
        watches.push_back(service.localIP.addNotifier(tell));
        watches.push_back(service.lastError.addNotifier(tell));
    }

    void obey(const QJsonObject &command) {
        const QString what = json::text(command, u"do").value_or(QString());
        if (what == u"enable"_s || what == u"disable"_s)
            launch(service.setEnabled(what == u"enable"_s));
        else if (what == u"send"_s)
            sent.append(channel.send(*json::text(command, u"to"), *json::text(command, u"chat"),
                                     {{u"content"_s, *json::text(command, u"text")}}));
        report();
    }

    void report() const {
        QJsonObject peers;
        const QList<QJsonObject> present = service.peers;
        for (const QJsonObject &peer : present)
            peers.insert(peer.value(u"user_id"_s).toString(), peer.value(u"local_ip"_s));
        say({{u"enabled"_s, service.isEnabled.value()},
             {u"ip"_s, service.localIP.value()},
             {u"error"_s, service.lastError.value().value_or(QString())},
             {u"peers"_s, peers},
             {u"connected"_s, listOf(channel.connectedPeerIds())},
             {u"linked"_s, listOf(service.linkedPeerIds())},
             {u"sent"_s, sent},
             {u"messages"_s, messages}});
    }

    SignedInSession signedIn;
    MessengerAPI api;
    MessengerWebSocket socket{QString(), {}};
    MessengerP2PDataChannel channel{signedIn.session};
    LinuxNetworkInterfaces interfaces;
    MessengerP2PLanService service;
    QJsonArray messages;
    QJsonArray sent;
    std::vector<QPropertyNotifier> watches;
};

} // namespace

int main(int argc, char **argv) {
    const OwnFolders folders;
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--interfaces"_s) {
        QJsonObject found;
        for (const InterfaceAddress &entry : LinuxNetworkInterfaces().ipv4Addresses())
            found.insert(entry.interfaceName, entry.address);
        say(found);
        return 0;
    }
    Host host(arguments.value(1), arguments.value(2), arguments.value(3).toLongLong(),
              arguments.value(4).toInt());
    QByteArray typed;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char bytes[4096];
        const ssize_t size = read(STDIN_FILENO, bytes, sizeof bytes);
        if (size <= 0)
            return QCoreApplication::quit();
        typed.append(bytes, size);
        for (qsizetype end = typed.indexOf('\n'); end >= 0; end = typed.indexOf('\n')) {
            host.obey(*json::parseObject(typed.first(end)));
            typed.remove(0, end + 1);
        }
    });
    return QCoreApplication::exec();
}

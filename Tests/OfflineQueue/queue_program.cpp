// SPDX-License-Identifier: MIT
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "OfflineQueue/MessengerOfflineQueue.h"
#include "Platform/FileSecretStore.h"
#include "Support/FaultySecretStore.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>

using namespace orvane;
using namespace Qt::StringLiterals;

// A queue that does what it is told on standard input, and says when it has: to be killed meanwhile.
//
//     queue_program FOLDER SERVER TOKEN   ->  found ID…
//     enqueue ID CHAT USER                ->  [OfflineQueue] Queued …
//     drain                               ->  drained

namespace {

class NoPath : public PathMonitor {
    void start() override {}
};

QCoro::Task<void> drain(MessengerOfflineQueue &queue) {
    co_await queue.drain();
    logLine(u"drained"_s);
}

void obey(MessengerOfflineQueue &queue, const QList<QByteArray> &words) {
    if (words.first() == "drain")
        return launch(drain(queue));
    QueuedMessage message;
    message.id = QString::fromLatin1(words.at(1));
    message.content = message.id;
    message.type = u"text"_s;
    message.chatID = QString::fromLatin1(words.at(2));
    message.userID = QString::fromLatin1(words.at(3));
    queue.enqueue(message);
}

} // namespace

int main(int argc, char **argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString &folder = arguments.at(1);
    FileSecretStore store(folder + u"/secrets.json"_s);

    QString found = u"found"_s;
    for (const QueuedMessage &message : QueueFile(folder, store).loadFromDisk())
        found += u' ' + message.id;
    logLine(found);

    MessengerSession session(std::make_unique<FaultySecretStore>(std::make_shared<StoredSecrets>()),
                             std::make_unique<UserDefaults>(folder + u"/defaults.ini"_s));
    session.token = arguments.at(3);
    MessengerAPI api(arguments.at(2), session);
    MessengerOfflineQueue queue(folder, store, api, std::make_unique<NoPath>());

    QByteArray unread;
    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, &application, [&] {
        char bytes[4096];
        const ssize_t size = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (size <= 0)
            return QCoreApplication::quit();
        unread.append(bytes, size);
        for (qsizetype end = unread.indexOf('\n'); end >= 0; end = unread.indexOf('\n')) {
            obey(queue, unread.first(end).split(' '));
            unread.remove(0, end + 1);
        }
    });
    return QCoreApplication::exec();
}

// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "OfflineQueue/MessengerOfflineQueue.h"
#include "Support/FaultySecretStore.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace orvane {

using namespace Qt::StringLiterals;

/// Takes standard output while it lives, and gives back what is not the queue's. No line may tell a message's
/// words.
class QueueLog {
public:
    QueueLog() {
        m_file.open();
        std::fflush(stdout);
        m_stdout = ::dup(STDOUT_FILENO);
        ::dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~QueueLog() {
        const QStringList said = all();
        ::dup2(m_stdout, STDOUT_FILENO);
        ::close(m_stdout);
        for (const QString &line : said) {
            if (line.contains(u"own words"_s))
                qFatal("a message's words in the log");
            if (!line.startsWith(prefix))
                std::puts(qUtf8Printable(line));
        }
    }
    Q_DISABLE_COPY_MOVE(QueueLog)

    /// The queue's lines so far, without their tag.
    QStringList lines() const {
        QStringList result;
        for (const QString &line : all())
            if (line.startsWith(prefix))
                result.append(line.mid(prefix.size()));
        return result;
    }

private:
    QStringList all() const {
        std::fflush(stdout);
        QFile file(m_file.fileName());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no log");
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    const QString prefix = u"[OfflineQueue] "_s;
    QTemporaryFile m_file;
    int m_stdout = -1;
};

/// What stands in the way of a file that is to be written.
enum class Obstacle { nothing, storeRefuses, fullDisk };

class Obstructed {
public:
    Obstructed(Obstacle obstacle, StoredSecrets &secrets)
        : m_obstacle(obstacle)
        , m_secrets(secrets) {
        if (obstacle == Obstacle::storeRefuses)
            secrets.failingCall = secrets.calls.size();
        if (obstacle == Obstacle::fullDisk)
            limitFiles(8192);
    }
    ~Obstructed() {
        if (m_obstacle == Obstacle::storeRefuses)
            m_secrets.failingCall = -1;
        if (m_obstacle == Obstacle::fullDisk)
            limitFiles(RLIM_INFINITY);
    }
    Q_DISABLE_COPY_MOVE(Obstructed)

private:
    static void limitFiles(rlim_t size) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = std::min(size, limit.rlim_max);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }

    Obstacle m_obstacle;
    StoredSecrets &m_secrets;
};

/// Says what a test has it say.
class ToldPath : public PathMonitor {
public:
    void start() override { started = true; }
    void say(Status status) { Q_EMIT pathUpdate(status); }
    bool started = false;
};

/// The secrets of a test, for any thread but the one with the windows.
class BackgroundStore : public FaultySecretStore {
public:
    using FaultySecretStore::FaultySecretStore;
    Match copyMatching(const QString &service, const QString &account) override {
        if (QThread::currentThread() == m_home)
            qFatal("the keyring is asked on the main thread");
        return FaultySecretStore::copyMatching(service, account);
    }

private:
    QThread *m_home = QThread::currentThread();
};

/// A queue in a folder of its own, and a server that follows a script. The key is in the store.
struct QueueDesk {
    QueueDesk() { secrets->items.insert(account, key); }

    const QString account = u"aes-gcm-key-v1"_s;
    const QByteArray key = QByteArray(32, 'k');
    QueueLog log;
    QTemporaryDir folder;
    ScriptedHttpServer http;
    SignedInSession signedIn;
    MessengerAPI api{http.base(), signedIn.session};
    std::shared_ptr<StoredSecrets> secrets = std::make_shared<StoredSecrets>();
    BackgroundStore store{secrets};
    ToldPath *path = nullptr;
    std::unique_ptr<MessengerOfflineQueue> queue;

    void start() {
        auto monitor = std::make_unique<ToldPath>();
        path = monitor.get();
        queue = std::make_unique<MessengerOfflineQueue>(folder.path(), store, api, std::move(monitor));
    }
    /// A queue that only loads; what it said.
    QStringList startAndEnd() {
        const qsizetype before = log.lines().size();
        start();
        queue.reset();
        return log.lines().mid(before);
    }
    /// Until it is saved.
    void enqueue(const QueuedMessage &message) {
        const auto saved = [this] { return log.lines().filter(u"Queued "_s).size(); };
        const qsizetype before = saved();
        queue->enqueue(message);
        if (!QTest::qWaitFor([&] { return saved() > before; }))
            qFatal("the message was not saved");
    }

    QString sealedFile() const { return folder.filePath(u"offline_queue.enc"_s); }
    QString legacyFile() const { return folder.filePath(u"offline_queue.json"_s); }
    static void write(const QString &path, const QByteArray &bytes) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("%s can't be written", qUtf8Printable(path));
    }
    /// Null where there is none.
    static QByteArray read(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QByteArray sealed(const QByteArray &json) const { return queueform::seal(json, SecretBytes(key)); }
    void save(const QList<QueuedMessage> &messages) {
        write(sealedFile(), sealed(queueform::encode(messages)));
    }
    /// What the sealed file holds.
    QList<QueuedMessage> saved() const { return saved(key); }
    QList<QueuedMessage> saved(const QByteArray &sealedWith) const {
        const SecretBytes plain = primitives::open(sealedWith, queueform::boxOf(read(sealedFile())));
        return queueform::decode(plain.view().toByteArray());
    }
};

inline QueuedMessage queued(const QString &id, qint64 retries = 0, qint64 maxRetries = 5) {
    QueuedMessage message;
    message.id = id;
    message.chatID = u"c"_s;
    message.content = u"my very own words"_s;
    message.type = u"text"_s;
    message.userID = u"7"_s;
    message.timestamp = QDateTime::fromMSecsSinceEpoch(1'700'000'000'250, Qt::UTC);
    message.retries = retries;
    message.maxRetries = maxRetries;
    return message;
}

} // namespace orvane

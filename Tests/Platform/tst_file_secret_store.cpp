// SPDX-License-Identifier: MIT
#include "Platform/FileSecretStore.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace orvane;

namespace {

const QString service = "com.orvanetalk.test";
const QString label = "a label";

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

// Large enough to take several writes, and different in every byte from the one before.
QByteArray payload(int number) {
    return QByteArray(60'000, char('a' + number % 26));
}

} // namespace

class TestFileSecretStore : public QObject {
    Q_OBJECT

public:
    /// Writes one item over and over until it is killed.
    static int child(const QStringList &arguments) {
        FileSecretStore store(arguments.at(0));
        for (int number = 0;; ++number) {
            if (store.add(service, "changing", label, payload(number)) != SecretStatus::success)
                return 1;
            if (number == 2)
                std::puts("going"), std::fflush(stdout);
        }
    }

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("new/folder/secrets.json");
    }

    void fileBelongsToItsOwnerAlone() {
        FileSecretStore store(m_path);
        QCOMPARE(store.add(service, "a", label, "1"), SecretStatus::success);
        const auto mode = [this] {
            struct stat status {};
            return ::stat(QFile::encodeName(m_path).constData(), &status) == 0 ? int(status.st_mode & 07777)
                                                                               : -1;
        };
        QCOMPARE(mode(), 0600);
        // Somebody opened it up in the meantime.
        QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0644), 0);
        QCOMPARE(store.add(service, "a", label, "2"), SecretStatus::success);
        QCOMPARE(mode(), 0600);
        QCOMPARE(store.remove(service, "a"), SecretStatus::success);
        QCOMPARE(mode(), 0600);
        QCOMPARE(QDir(QFileInfo(m_path).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void damagedFilesAreToldAndKeptAside() {
        for (const QByteArray &bytes :
             {QByteArray(), QByteArray("{\"com.orvanetalk.test/a\":{\"data\":\"MQ"), QByteArray("[]"),
              QByteArray(1000, '\xff'), "{\"a\":" + QByteArray(5000, '[')}) {
            IN_ROW(bytes.left(40).toPercentEncoding());
            init();
            QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
            write(m_path, bytes);
            FileSecretStore store(m_path);
            QCOMPARE(store.copyMatching(service, "a").status, SecretStatus::damaged);
            QCOMPARE(store.remove(service, "a"), SecretStatus::damaged);
            QCOMPARE(contentsOf(m_path), bytes);
            QCOMPARE(store.add(service, "a", label, "1"), SecretStatus::success);
            QCOMPARE(store.copyMatching(service, "a").data, "1");
            QCOMPARE(contentsOf(m_path + ".damaged"), bytes);
        }
    }

    void damagedItemsAreTold() {
        for (const char *item : {"{}", R"({"label":"a label"})", R"({"data":7})", R"({"data":null})",
                                 R"({"data":"%%%"})", R"({"data":"ЖЖЖЖ"})"}) {
            IN_ROW(item);
            init();
            QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
            write(m_path, QByteArray(R"({"com.orvanetalk.test/a":)") + item +
                              R"(,"com.orvanetalk.test/b":{"data":"MQ=="}})");
            FileSecretStore store(m_path);
            QCOMPARE(store.copyMatching(service, "a").status, SecretStatus::damaged);
            QCOMPARE(store.copyMatching(service, "b").data, "1");
            QCOMPARE(store.remove(service, "a"), SecretStatus::success);
            QCOMPARE(store.copyMatching(service, "b").data, "1");
        }
    }

    void whatStandsInTheWayIsKept() {
        write(m_folder->filePath("new"), "in the way");
        QCOMPARE(FileSecretStore(m_path).add(service, "a", label, "1"), SecretStatus::notWritten);
        QCOMPARE(contentsOf(m_folder->filePath("new")), "in the way");
        // A folder in the place of the file.
        init();
        QVERIFY(QDir().mkpath(m_path + "/kept"));
        QCOMPARE(FileSecretStore(m_path).copyMatching(service, "a").status, SecretStatus::damaged);
        QCOMPARE(FileSecretStore(m_path).add(service, "a", label, "1"), SecretStatus::success);
        QVERIFY(QFileInfo::exists(m_path + ".damaged/kept"));
    }

    void aFullDiskLosesNothing() {
        FileSecretStore store(m_path);
        QCOMPARE(store.add(service, "a", label, "1"), SecretStatus::success);
        const QByteArray before = contentsOf(m_path);
        // No file of this process may grow meanwhile: not even a failing test may write.
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit tight{100, limit.rlim_max};
        const auto signal = std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &tight);
        const qint32 status = store.add(service, "b", label, payload(1));
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, signal);
        QCOMPARE(status, SecretStatus::notWritten);
        QCOMPARE(contentsOf(m_path), before);
    }

    void killedWritersLoseNothing() {
        FileSecretStore store(m_path);
        QCOMPARE(store.add(service, "kept", label, "kept"), SecretStatus::success);
        for (int round = 0; round < 12; ++round) {
            QProcess writer;
            writer.start(QCoreApplication::applicationFilePath(), {"--child", m_path});
            QVERIFY(writer.waitForReadyRead(20'000));
            // Each round strikes at another moment of the writing.
            QVERIFY(!writer.waitForFinished(round));
            writer.kill();
            QVERIFY(writer.waitForFinished());
            QCOMPARE(store.copyMatching(service, "kept").data, "kept");
            const SecretStore::Match changing = store.copyMatching(service, "changing");
            QCOMPARE(changing.status, SecretStatus::success);
            QCOMPARE(changing.data, QByteArray(60'000, changing.data.at(0)));
        }
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

ORVANE_TEST_MAIN(TestFileSecretStore)
#include "tst_file_secret_store.moc"

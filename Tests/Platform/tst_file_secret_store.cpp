// SPDX-License-Identifier: MIT
#include "Platform/FileSecretStore.h"
#include "Support/StoreBytes.h"
#include "Support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QString service = u"com.orvanetalk.test"_s;
const QString label = u"a label"_s;

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

/// While it lives, no file of this process grows beyond `bytes`, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_signal(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit now{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &now);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_before{};
    void (*m_signal)(int);
};

} // namespace

class TestFileSecretStore : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments);

private Q_SLOTS:
    void init();
    void bytesComeBackAfterARestart_data() { storedBytesColumn(); }
    void bytesComeBackAfterARestart();
    void itemsAreKeptApart();
    void fileBelongsToItsOwnerAlone();
    void damagedFilesAreToldAndKeptAside_data();
    void damagedFilesAreToldAndKeptAside();
    void damagedItemsAreTold_data();
    void damagedItemsAreTold();
    void failingWritesLoseNothing_data();
    void failingWritesLoseNothing();
    void killedWritersLoseNothing();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

/// Writes one item over and over until it is killed.
int TestFileSecretStore::child(const QStringList &arguments) {
    FileSecretStore store(arguments.at(0));
    for (int number = 0;; ++number) {
        if (store.add(service, u"changing"_s, label, payload(number)) != SecretStatus::success)
            return 1;
        if (number == 2)
            std::puts("going"), std::fflush(stdout);
    }
}

void TestFileSecretStore::init() {
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(u"new/folder/secrets.json"_s);
}

void TestFileSecretStore::bytesComeBackAfterARestart() {
    QFETCH(QByteArray, data);
    const QString account = u"ключ \"1\"/\\"_s;
    QCOMPARE(FileSecretStore(m_path).copyMatching(service, account).status, SecretStatus::itemNotFound);
    QCOMPARE(FileSecretStore(m_path).remove(service, account), SecretStatus::itemNotFound);
    QCOMPARE(FileSecretStore(m_path).add(service, account, label, "before"), SecretStatus::success);
    QCOMPARE(FileSecretStore(m_path).add(service, account, label, data), SecretStatus::success);
    const SecretStore::Match match = FileSecretStore(m_path).copyMatching(service, account);
    QCOMPARE(match.status, SecretStatus::success);
    QCOMPARE(match.data, data);
    QCOMPARE(FileSecretStore(m_path).remove(service, account), SecretStatus::success);
    QCOMPARE(FileSecretStore(m_path).copyMatching(service, account).status, SecretStatus::itemNotFound);
}

void TestFileSecretStore::itemsAreKeptApart() {
    FileSecretStore one(m_path);
    FileSecretStore other(m_path);
    QCOMPARE(one.add(service, u"a"_s, label, "1"), SecretStatus::success);
    QCOMPARE(other.add(service, u"A"_s, label, "2"), SecretStatus::success);
    QCOMPARE(one.add(u"other"_s, u"a"_s, label, "3"), SecretStatus::success);
    QCOMPARE(other.remove(service, u"A"_s), SecretStatus::success);
    QCOMPARE(one.copyMatching(service, u"a"_s).data, "1");
    QCOMPARE(other.copyMatching(u"other"_s, u"a"_s).data, "3");
}

void TestFileSecretStore::fileBelongsToItsOwnerAlone() {
    FileSecretStore store(m_path);
    QCOMPARE(store.add(service, u"a"_s, label, "1"), SecretStatus::success);
    const auto mode = [this] {
        struct stat status {};
        return ::stat(QFile::encodeName(m_path).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
    };
    QCOMPARE(mode(), 0600);
    // Somebody opened it up in the meantime.
    QCOMPARE(::chmod(QFile::encodeName(m_path).constData(), 0644), 0);
    QCOMPARE(store.add(service, u"a"_s, label, "2"), SecretStatus::success);
    QCOMPARE(mode(), 0600);
    QCOMPARE(store.remove(service, u"a"_s), SecretStatus::success);
    QCOMPARE(mode(), 0600);
    QCOMPARE(QDir(QFileInfo(m_path).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void TestFileSecretStore::damagedFilesAreToldAndKeptAside_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("half") << QByteArray(R"({"com.orvanetalk.test/a":{"data":"MQ)");
    QTest::newRow("list") << QByteArray("[]");
    QTest::newRow("noise") << QByteArray(1000, '\xff');
    QTest::newRow("too deep") << QByteArray(R"({"a":)") + QByteArray(5000, '[');
}

void TestFileSecretStore::damagedFilesAreToldAndKeptAside() {
    QFETCH(QByteArray, bytes);
    QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
    write(m_path, bytes);
    FileSecretStore store(m_path);
    QCOMPARE(store.copyMatching(service, u"a"_s).status, SecretStatus::damaged);
    QCOMPARE(store.remove(service, u"a"_s), SecretStatus::damaged);
    QCOMPARE(contentsOf(m_path), bytes);
    QCOMPARE(store.add(service, u"a"_s, label, "1"), SecretStatus::success);
    QCOMPARE(store.copyMatching(service, u"a"_s).data, "1");
    QCOMPARE(contentsOf(m_path + u".damaged"_s), bytes);
}

void TestFileSecretStore::damagedItemsAreTold_data() {
    QTest::addColumn<QByteArray>("item");
    for (const char *item : {"{}", R"({"label":"a label"})", R"({"data":7})", R"({"data":null})",
                             R"({"data":"%%%"})", R"({"data":"ЖЖЖЖ"})"})
        QTest::newRow(item) << QByteArray(item);
}

void TestFileSecretStore::damagedItemsAreTold() {
    QFETCH(QByteArray, item);
    QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
    write(m_path, R"({"com.orvanetalk.test/a":)" + item + R"(,"com.orvanetalk.test/b":{"data":"MQ=="}})");
    FileSecretStore store(m_path);
    QCOMPARE(store.copyMatching(service, u"a"_s).status, SecretStatus::damaged);
    QCOMPARE(store.copyMatching(service, u"b"_s).data, "1");
    QCOMPARE(store.remove(service, u"a"_s), SecretStatus::success);
    QCOMPARE(store.copyMatching(service, u"b"_s).data, "1");
}

void TestFileSecretStore::failingWritesLoseNothing_data() {
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("a file stands where the folder should") << u"file"_s;
    QTest::newRow("a folder stands where the file should") << u"folder"_s;
    QTest::newRow("the disk is full") << u"full"_s;
}

void TestFileSecretStore::failingWritesLoseNothing() {
    QFETCH(QString, obstacle);
    if (obstacle == u"file") {
        write(m_folder->filePath(u"new"_s), "in the way");
        QCOMPARE(FileSecretStore(m_path).add(service, u"a"_s, label, "1"), SecretStatus::notWritten);
        QCOMPARE(contentsOf(m_folder->filePath(u"new"_s)), "in the way");
    } else if (obstacle == u"folder") {
        QVERIFY(QDir().mkpath(m_path + u"/kept"_s));
        QCOMPARE(FileSecretStore(m_path).copyMatching(service, u"a"_s).status, SecretStatus::damaged);
        QCOMPARE(FileSecretStore(m_path).add(service, u"a"_s, label, "1"), SecretStatus::success);
        QVERIFY(QFileInfo::exists(m_path + u".damaged/kept"_s));
    } else {
        FileSecretStore store(m_path);
        QCOMPARE(store.add(service, u"a"_s, label, "1"), SecretStatus::success);
        const QByteArray before = contentsOf(m_path);
        // Nothing else may write while the limit holds, not even a failing test.
        const qint32 status = [&store] {
            const FileSizeLimit limit(100);
            return store.add(service, u"b"_s, label, payload(1));
        }();
        QCOMPARE(status, SecretStatus::notWritten);
        QCOMPARE(contentsOf(m_path), before);
    }
}

void TestFileSecretStore::killedWritersLoseNothing() {
    FileSecretStore store(m_path);
    QCOMPARE(store.add(service, u"kept"_s, label, "kept"), SecretStatus::success);
    for (int round = 0; round < 12; ++round) {
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(), {u"--child"_s, m_path});
        QVERIFY(writer.waitForReadyRead(20'000));
        // Each round strikes at another moment of the writing.
        QVERIFY(!writer.waitForFinished(round));
        writer.kill();
        QVERIFY(writer.waitForFinished());
        QCOMPARE(store.copyMatching(service, u"kept"_s).data, "kept");
        const SecretStore::Match changing = store.copyMatching(service, u"changing"_s);
        QCOMPARE(changing.status, SecretStatus::success);
        QCOMPARE(changing.data, QByteArray(60'000, changing.data.at(0)));
    }
}

ORVANE_TEST_MAIN(TestFileSecretStore)

#include "tst_file_secret_store.moc"

// SPDX-License-Identifier: MIT
#include "Platform/SingleInstance.h"
#include "Support/TestMain.h"

#include <QSignalSpy>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// What a process that was killed leaves: a socket that nobody listens at.
void leaveSocket(const QString &path) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, path.toUtf8().constData(), sizeof address.sun_path);
    ::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address);
    ::close(socket);
}

} // namespace

class TestSingleInstance : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFirstIsToldOfEveryOther();
    void anotherFolderIsAnotherClient();
    void aSocketWithoutAProcessIsNobody();
    void whereNoSocketCanBeEveryoneIsTheFirst_data();
    void whereNoSocketCanBeEveryoneIsTheFirst();

private:
    QTemporaryDir m_folder;
};

void TestSingleInstance::theFirstIsToldOfEveryOther() {
    const QString path = m_folder.filePath(u"a"_s);
    {
        SingleInstance first(path);
        QSignalSpy told(&first, &SingleInstance::windowWanted);
        QVERIFY(first.claim());
        QVERIFY(!SingleInstance(path).claim());
        QTRY_COMPARE(told.size(), 1);
        QVERIFY(!SingleInstance(path).claim());
        QTRY_COMPARE(told.size(), 2);
    }
    QVERIFY(SingleInstance(path).claim());
}

void TestSingleInstance::anotherFolderIsAnotherClient() {
    const QString path = SingleInstance::defaultPath();
    QCOMPARE(SingleInstance::defaultPath(), path);
    qputenv("XDG_DATA_HOME", m_folder.path().toUtf8() + QByteArray(200, 'd'));
    QVERIFY(SingleInstance::defaultPath() != path);
    QVERIFY(SingleInstance::defaultPath().size() == path.size());
}

void TestSingleInstance::aSocketWithoutAProcessIsNobody() {
    const QString path = m_folder.filePath(u"b"_s);
    leaveSocket(path);
    QVERIFY(QFile::exists(path));
    SingleInstance next(path);
    QVERIFY(next.claim());
    QVERIFY(!SingleInstance(path).claim());
}

void TestSingleInstance::whereNoSocketCanBeEveryoneIsTheFirst_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("too long") << m_folder.filePath(QString(150, u'x'));
    QTest::newRow("no folder") << m_folder.filePath(u"none/c"_s);
}

void TestSingleInstance::whereNoSocketCanBeEveryoneIsTheFirst() {
    QFETCH(QString, path);
    SingleInstance one(path);
    SingleInstance other(path);
    QVERIFY(one.claim());
    QVERIFY(other.claim());
}

ORVANE_TEST_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"

// SPDX-License-Identifier: MIT
#include "Platform/SingleInstance.h"
#include "Support/TestMain.h"

#include <QSignalSpy>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

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
    void theFirstIsToldOfEveryOther() {
        const QString path = m_folder.filePath("a");
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

    void anotherFolderIsAnotherClient() {
        const QString path = SingleInstance::defaultPath();
        QCOMPARE(SingleInstance::defaultPath(), path);
        qputenv("XDG_DATA_HOME", m_folder.path().toUtf8() + QByteArray(200, 'd'));
        QVERIFY(SingleInstance::defaultPath() != path);
        QVERIFY(SingleInstance::defaultPath().size() == path.size());
    }

    void aSocketWithoutAProcessIsNobody() {
        const QString path = m_folder.filePath("b");
        leaveSocket(path);
        QVERIFY(QFile::exists(path));
        SingleInstance next(path);
        QVERIFY(next.claim());
        QVERIFY(!SingleInstance(path).claim());
    }

    void whereNoSocketCanBeEveryoneIsTheFirst() {
        for (const QString &path : {m_folder.filePath(QString(150, u'x')), m_folder.filePath("none/c")}) {
            SingleInstance one(path);
            SingleInstance other(path);
            QVERIFY2(one.claim() && other.claim(), qPrintable(path));
        }
    }

private:
    QTemporaryDir m_folder;
};

ORVANE_TEST_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"

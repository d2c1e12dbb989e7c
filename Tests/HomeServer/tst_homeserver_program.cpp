// SPDX-License-Identifier: MIT
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

// Starts the program and returns the first line it prints.
QByteArray start(QProcess &program, const QStringList &arguments) {
    program.start(QString::fromLocal8Bit(HOMESERVER_PROGRAM), arguments);
    while (!program.canReadLine() && program.waitForReadyRead(10'000)) {
    }
    return program.readLine();
}

} // namespace

class ProgramTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void saysWhereItListensAndEndsOnSignals() {
        for (const int signal : {SIGTERM, SIGINT}) {
            const QTemporaryDir folder;
            QProcess program;
            const QByteArray line = start(program, {u"--data"_s, folder.filePath(u"a/b"_s)});
            static const QRegularExpression expected(
                u"^listening http=http://127\\.0\\.0\\.1:\\d+ ws=ws://127\\.0\\.0\\.1:\\d+/\\n$"_s);
            QVERIFY2(expected.match(QString::fromUtf8(line)).hasMatch(), line.constData());
            ::kill(static_cast<pid_t>(program.processId()), signal);
            QVERIFY(program.waitForFinished());
            QCOMPARE(program.exitStatus(), QProcess::NormalExit);
            QCOMPARE(program.exitCode(), 0);
            QVERIFY(program.readAllStandardOutput().isEmpty());
            // The log was folded back into the database: nothing was cut off.
            QVERIFY(!QFile::exists(folder.filePath(u"a/b/homeserver.sqlite-wal"_s)));
        }
    }

    void refusesToStart() {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::LocalHost));
        const QString taken = QString::number(other.serverPort());
        const QTemporaryDir folder;
        const QString data = folder.path();
        for (const QStringList &arguments : {QStringList{},
                                             {u"--data"_s, u"/dev/null"_s},
                                             {u"--data"_s, u"/proc/orvane"_s},
                                             {u"--data"_s, data, u"--http-port"_s, u"http"_s},
                                             {u"--data"_s, data, u"--ws-port"_s, u"65536"_s},
                                             {u"--data"_s, data, u"--listen"_s, u"here"_s},
                                             {u"--data"_s, data, u"--http-port"_s, taken},
                                             {u"--data"_s, data, u"--ws-port"_s, taken}}) {
            QProcess program;
            QVERIFY(start(program, arguments).isEmpty());
            QVERIFY(program.state() == QProcess::NotRunning || program.waitForFinished());
            QCOMPARE(program.exitCode(), 1);
            const QByteArray error = program.readAllStandardError();
            QVERIFY2(error.startsWith("orvanetalk-homeserver: ") && error.count('\n') == 1,
                     error.constData());
        }
    }
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_homeserver_program.moc"

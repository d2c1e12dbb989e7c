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
    void saysWhereItListens();
    void endsOnSignals_data();
    void endsOnSignals();
    void refusesToStart_data();
    void refusesToStart();
};

void ProgramTest::saysWhereItListens() {
    const QTemporaryDir folder;
    QProcess program;
    const QByteArray line = start(program, {u"--data"_s, folder.filePath(u"a/b"_s)});
    static const QRegularExpression expected(
        u"^listening http=http://127\\.0\\.0\\.1:\\d+ ws=ws://127\\.0\\.0\\.1:\\d+/\\n$"_s);
    QVERIFY2(expected.match(QString::fromUtf8(line)).hasMatch(), line.constData());
    program.terminate();
    QVERIFY(program.waitForFinished());
    QVERIFY(program.readAllStandardOutput().isEmpty());
}

void ProgramTest::endsOnSignals_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void ProgramTest::endsOnSignals() {
    QFETCH(int, signal);
    const QTemporaryDir folder;
    QProcess program;
    QVERIFY(!start(program, {u"--data"_s, folder.path()}).isEmpty());
    ::kill(static_cast<pid_t>(program.processId()), signal);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    // The log was folded back into the database: nothing was cut off.
    QVERIFY(!QFile::exists(folder.filePath(u"homeserver.sqlite-wal"_s)));
}

void ProgramTest::refusesToStart_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no folder") << QStringList{};
    QTest::newRow("folder is a file") << QStringList{u"--data"_s, u"/dev/null"_s};
    QTest::newRow("folder cannot be written") << QStringList{u"--data"_s, u"/proc/orvane"_s};
    QTest::newRow("port is no number") << QStringList{u"--data"_s, u"DATA"_s, u"--http-port"_s, u"http"_s};
    QTest::newRow("port is too large") << QStringList{u"--data"_s, u"DATA"_s, u"--ws-port"_s, u"65536"_s};
    QTest::newRow("address is none") << QStringList{u"--data"_s, u"DATA"_s, u"--listen"_s, u"here"_s};
    QTest::newRow("request port taken") << QStringList{u"--data"_s, u"DATA"_s, u"--http-port"_s, u"TAKEN"_s};
    QTest::newRow("event port taken") << QStringList{u"--data"_s, u"DATA"_s, u"--ws-port"_s, u"TAKEN"_s};
}

void ProgramTest::refusesToStart() {
    QFETCH(QStringList, arguments);
    const QTemporaryDir folder;
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    arguments.replaceInStrings(u"DATA"_s, folder.path());
    arguments.replaceInStrings(u"TAKEN"_s, QString::number(other.serverPort()));
    QProcess program;
    QVERIFY(start(program, arguments).isEmpty());
    QVERIFY(program.state() == QProcess::NotRunning || program.waitForFinished());
    QCOMPARE(program.exitCode(), 1);
    const QByteArray error = program.readAllStandardError();
    QVERIFY2(error.startsWith("orvanetalk-homeserver: ") && error.count('\n') == 1, error.constData());
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_homeserver_program.moc"

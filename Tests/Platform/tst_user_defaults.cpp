// SPDX-License-Identifier: MIT
#include "Platform/Folders.h"
#include "Platform/UserDefaults.h"
#include "Support/TestMain.h"

#include <QFile>

#include <limits>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestUserDefaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void textsComeBackAfterARestart_data();
    void textsComeBackAfterARestart();
    void integersComeBackAfterARestart_data();
    void integersComeBackAfterARestart();
    void hostileFilesAreRead_data();
    void hostileFilesAreRead();
    void absentKeysAreAbsent();
    void filesStandInTheFoldersOfTheUser();

private:
    QString path() const { return m_folder->filePath(u"defaults.ini"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestUserDefaults::textsComeBackAfterARestart_data() {
    QTest::addColumn<QString>("text");
    for (const char *text :
         {"dev_0123456789abcdef", "", " spaces ", "a, b;c", "\"quoted\"", "back\\slash\\n", "@Invalid()",
          "@ByteArray(x)", "line\nline", "@ann:example.org", "Тема 🌒", "%20=x", "true", "007"})
        QTest::addRow("<%s>", text) << QString::fromUtf8(text);
}

void TestUserDefaults::textsComeBackAfterARestart() {
    QFETCH(QString, text);
    const QString key = u"ot_matrix_id"_s;
    UserDefaults(path()).set(key, u"before"_s);
    UserDefaults(path()).set(key, text);
    QCOMPARE(UserDefaults(path()).text(key), text);
}

void TestUserDefaults::integersComeBackAfterARestart_data() {
    QTest::addColumn<qint64>("value");
    QTest::newRow("0") << qint64(0);
    QTest::newRow("-1") << qint64(-1);
    QTest::newRow("greatest") << std::numeric_limits<qint64>::max();
    QTest::newRow("least") << std::numeric_limits<qint64>::min();
}

void TestUserDefaults::integersComeBackAfterARestart() {
    QFETCH(qint64, value);
    const QString key = u"ot_sync_cursor"_s;
    UserDefaults first(path());
    first.set(key, qint64(5));
    first.set(key, value);
    QCOMPARE(first.integer(key), value);
    QCOMPARE(UserDefaults(path()).integer(key), value);
}

void TestUserDefaults::hostileFilesAreRead_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qint64>("integer");
    QTest::newRow("nothing") << QByteArray() << qint64(0);
    QTest::newRow("text") << QByteArray("[General]\nkey=abc\n") << qint64(0);
    QTest::newRow("fraction") << QByteArray("[General]\nkey=1.5\n") << qint64(0);
    QTest::newRow("overflow") << QByteArray("[General]\nkey=9223372036854775808\n") << qint64(0);
    QTest::newRow("digits and letters") << QByteArray("[General]\nkey=12a\n") << qint64(0);
    QTest::newRow("noise") << QByteArray(100, '\xff') << qint64(0);
    QTest::newRow("no section") << QByteArray("key=12\n") << qint64(12);
}

void TestUserDefaults::hostileFilesAreRead() {
    QFETCH(QByteArray, bytes);
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    UserDefaults defaults(path());
    QTEST(defaults.integer(u"key"_s), "integer");
    defaults.set(u"other"_s, qint64(7));
    QCOMPARE(UserDefaults(path()).integer(u"other"_s), qint64(7));
    QTEST(UserDefaults(path()).integer(u"key"_s), "integer");
}

void TestUserDefaults::absentKeysAreAbsent() {
    const UserDefaults defaults(path());
    QVERIFY(!defaults.text(u"ot_device_id"_s));
    QCOMPARE(defaults.integer(u"ot_sync_cursor"_s), qint64(0));
}

void TestUserDefaults::filesStandInTheFoldersOfTheUser() {
    UserDefaults().set(u"key"_s, u"value"_s);
    QVERIFY(QFile::exists(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/OrvaneTalk/OrvaneTalk.ini"_s));
    QCOMPARE(folders::data(), qEnvironmentVariable("XDG_DATA_HOME") + u"/OrvaneTalk"_s);
}

ORVANE_TEST_MAIN(TestUserDefaults)

#include "tst_user_defaults.moc"

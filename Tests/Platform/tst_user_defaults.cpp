// SPDX-License-Identifier: MIT
#include "Platform/Folders.h"
#include "Platform/UserDefaults.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QFile>

#include <limits>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestUserDefaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void textsComeBackAfterARestart() {
        for (const QString text :
             {"dev_0123456789abcdef", "", " spaces ", "a, b;c", "\"quoted\"", "back\\slash\\n", "@Invalid()",
              "@ByteArray(x)", "line\nline", "@ann:example.org", "Тема 🌒", "%20=x", "true", "007"}) {
            UserDefaults(path()).set("ot_matrix_id", u"before"_s);
            UserDefaults(path()).set("ot_matrix_id", text);
            QCOMPARE(UserDefaults(path()).text("ot_matrix_id"), text);
        }
    }

    void integersComeBackAfterARestart() {
        for (const qint64 value : {qint64(0), qint64(-1), std::numeric_limits<qint64>::max(),
                                   std::numeric_limits<qint64>::min()}) {
            UserDefaults first(path());
            first.set("ot_sync_cursor", qint64(5));
            first.set("ot_sync_cursor", value);
            QCOMPARE(first.integer("ot_sync_cursor"), value);
            QCOMPARE(UserDefaults(path()).integer("ot_sync_cursor"), value);
        }
    }

    void hostileFilesAreRead() {
        const auto check = [this](const QByteArray &bytes, qint64 integer = 0) {
            IN_ROW(bytes.toPercentEncoding(" =[]"));
            init();
            QFile file(path());
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(bytes);
            file.close();
            UserDefaults defaults(path());
            QCOMPARE(defaults.integer("key"), integer);
            defaults.set("other", qint64(7));
            QCOMPARE(UserDefaults(path()).integer("other"), 7);
            QCOMPARE(UserDefaults(path()).integer("key"), integer);
        };
        check("");
        for (const char *number : {"abc", "1.5", "9223372036854775808", "12a"})
            check(QByteArray("[General]\nkey=") + number + '\n');
        check(QByteArray(100, '\xff'));
        check("key=12\n", 12);
    }

    void absentKeysAreAbsent() {
        const UserDefaults defaults(path());
        QVERIFY(!defaults.text(u"ot_device_id"_s));
        QCOMPARE(defaults.integer(u"ot_sync_cursor"_s), qint64(0));
    }

    void filesStandInTheFoldersOfTheUser() {
        UserDefaults().set(u"key"_s, u"value"_s);
        QVERIFY(QFile::exists(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/OrvaneTalk/OrvaneTalk.ini"_s));
        QCOMPARE(folders::data(), qEnvironmentVariable("XDG_DATA_HOME") + u"/OrvaneTalk"_s);
    }

private:
    QString path() const { return m_folder->filePath(u"defaults.ini"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

ORVANE_TEST_MAIN(TestUserDefaults)
#include "tst_user_defaults.moc"

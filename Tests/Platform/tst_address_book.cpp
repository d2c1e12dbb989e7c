// SPDX-License-Identifier: MIT
#include "Platform/DesktopAddressBook.h"
#include "Platform/EvolutionSources.h"
#include "Support/Await.h"
#include "Support/BusPeer.h"
#include "Support/InRow.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

using namespace orvane;
using namespace Qt::StringLiterals;

using Objects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;
using Script = std::function<QDBusMessage(const QDBusMessage &call)>;

namespace {

QString card(const QString &given, const QString &number, const QString &more = {}) {
    return u"BEGIN:VCARD\r\nVERSION:3.0\r\nN:;%1;;;\r\nTEL:%2\r\n%3END:VCARD\r\n"_s.arg(given, number, more);
}

void write(const QString &path, const QString &text) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(text.toUtf8());
}

QString dataFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

// With each one's picture behind the name.
QStringList names(AddressBook &book) {
    const QList<AddressBookPerson> people = *outcomeOf(book.people()).value;
    QStringList result;
    for (const AddressBookPerson &person : people)
        result << (person.givenName + ' ' + QString::fromUtf8(person.picture)).trimmed();
    return result;
}

bool access(AddressBook &book) {
    return *outcomeOf(book.requestAccess()).value;
}

// Evolution Data Server's interfaces, in the shapes that its release 3.46 was seen to use.
struct DataServer : BusPeer {
    explicit DataServer(const QStringList &itsCards)
        : BusPeer(root, {"org.gnome.evolution.dataserver.Sources5", book})
        , cards(itsCards) {
        answer = [this](const QDBusMessage &call) {
            const QString question = questionOf(call);
            if (call.member() == scripted)
                return script(call);
            if (question == "/SourceManager ObjectManager.GetManagedObjects")
                return call.createReply(QVariant::fromValue(objects()));
            if (question == "/AddressBookFactory AddressBookFactory.OpenAddressBook")
                return call.createReply({root + "/Subprocess/1/2", book});
            if (question == "/Subprocess/1/2 AddressBook.Open")
                return call.createReply(QStringList{"writable", "true"});
            if (question == "/Subprocess/1/2 AddressBook.GetContactList")
                return call.createReply(cards);
            return call.createReply();
        };
    }

    QStringList cards;
    /// The method that is answered by the script instead.
    QString scripted;
    Script script;

    bool wasAsked(const QString &question) const {
        return std::any_of(heard.begin(), heard.end(),
                           [&](const QDBusMessage &call) { return questionOf(call) == question; });
    }

private:
    static QString questionOf(const QDBusMessage &call) {
        return call.path().mid(root.size()) + ' ' + call.interface().section('.', -1) + '.' + call.member();
    }
    static Objects objects() {
        const QVariantMap local{
            {"UID", "system"},
            {"Data", "[Data Source]\nEnabled=true\n\n[Address Book]\nBackendName=local\n"}};
        const QVariantMap calendar{{"UID", "c"}, {"Data", "[Data Source]\nEnabled=true\n[Calendar]\n"}};
        const QString source = "org.gnome.evolution.dataserver.Source";
        const QString path = root + "/SourceManager/Source";
        return {{QDBusObjectPath(path), {{source, local}}},
                {QDBusObjectPath(path + "_1"), {{source, calendar}}},
                {QDBusObjectPath(path + "_2"), {{"another.Interface", {}}}}};
    }

    static inline const QString root = u"/org/gnome/evolution/dataserver"_s;
    static inline const QString book = u"org.gnome.evolution.dataserver.AddressBook10"_s;
};

} // namespace

class TestAddressBook : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
        qDBusRegisterMetaType<Objects>();
        QVERIFY(m_bus.start());
    }

    void init() {
        QVERIFY(QDir(dataFolder()).removeRecursively());
        QVERIFY(QDir().mkpath(dataFolder()));
    }

    void sources() {
        const auto check = [](const char *name, const QString &keyFile, bool counts) {
            IN_ROW(name);
            const QHash<QString, QString> all{{"book", keyFile},
                                              {"child-of-off", "[Data Source]\nParent=off\n"},
                                              {"off", "[Data Source]\nEnabled=false\n"}};
            QCOMPARE(evolutionAddressBooks(all), counts ? QStringList{"book"} : QStringList());
        };
        check("plain", "[Data Source]\nEnabled=true\n[Address Book]\nBackendName=local", true);
        check("says nothing", "[Address Book]", true);
        check("a calendar", "[Data Source]\nEnabled=true\n[Calendar]\nBackendName=local", false);
        check("off", "[Data Source]\nEnabled=false\n[Address Book]\nBackendName=local", false);
        check("of an account that is off", "[Data Source]\nParent=child-of-off\n[Address Book]\n", false);
        check("its own parent", "[Data Source]\nParent=book\n[Address Book]\n", true);
        check("of an unknown account", "[Data Source]\nParent=x\n[Address Book]\n", true);
        check("a directory", "[Address Book]\nBackendName=ldap", false);
        check(
            "translated and odd lines",
            "# c\n[Data Source]\nEnabled[ru]=false\n=\n[\nEnabled=false\n\r\n[Address Book]\r\nBackendName = "
            "x\r\n",
            true);
        check("nothing", "", false);
    }

    void foldersAreReadWithAllWithin() {
        write(dataFolder() + "/OrvaneTalk/contacts/a.vcf", card("Anna", "1") + card("Ben", "2"));
        write(dataFolder() + "/contacts/family/b.VCF", card("Carl", "3"));
        write(dataFolder() + "/contacts/std.vcard", card("Dora", "4"));
        write(dataFolder() + "/contacts/notes.txt", card("Nobody", "5"));
        write(dataFolder() + "/contacts/broken.vcf", "BEGIN:VCARD\r\nN:;Cut\r\nTEL:1");
        // To open a pipe would wait for ever.
        QCOMPARE(mkfifo(qPrintable(dataFolder() + "/contacts/pipe.vcf"), 0600), 0);
        QVERIFY(QFile::link(dataFolder() + "/contacts", dataFolder() + "/contacts/round"));
        VCardFolder book;
        QVERIFY(access(book));
        QCOMPARE(names(book), (QStringList{"Anna", "Ben", "Carl", "Dora"}));
    }

    void aClosedFolderIsRefused() {
        const QString folder = dataFolder() + "/contacts";
        QVERIFY(QDir().mkpath(folder));
        VCardFolder book({folder, dataFolder() + "/none"});
        QVERIFY(access(book));
        QVERIFY(QFile::setPermissions(folder, QFile::WriteOwner));
        // Looks like somebody else's to whoever asks about permissions, the superuser's included.
        const uid_t real = getuid();
        QVERIFY(real != 0 || setreuid(65534, uid_t(-1)) == 0);
        const bool allowed = access(book);
        QVERIFY(real != 0 || setreuid(real, uid_t(-1)) == 0);
        QVERIFY(!allowed);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void withoutAnythingThereIsNobody() {
        DesktopAddressBook book;
        EvolutionAddressBook offline(QDBusConnection("no bus"));
        for (AddressBook *each : {static_cast<AddressBook *>(&book), static_cast<AddressBook *>(&offline)}) {
            QVERIFY(access(*each));
            QCOMPARE(names(*each), QStringList());
        }
    }

    void theDataServerComesFirst() {
        write(dataFolder() + "/contacts/b.vcf", card("Carl", "3"));
        DesktopAddressBook book;
        QCOMPARE(names(book), QStringList{"Carl"});
        DataServer server({card("Anna", "1"), "broken", card("Ben", "2")});
        QVERIFY(access(book));
        QCOMPARE(names(book), (QStringList{"Anna", "Ben"}));
        QTRY_VERIFY(server.wasAsked("/Subprocess/1/2 AddressBook.Close"));
        // Somebody who installed it and keeps their cards elsewhere.
        server.cards.clear();
        QCOMPARE(names(book), QStringList{"Carl"});
    }

    void answersOfTheDataServer() {
        const auto check = [](const char *name, const QString &method, const Script &script,
                              bool read = false, bool allowed = true) {
            IN_ROW(name);
            DataServer server({card("Anna", "1")});
            server.scripted = method;
            server.script = script;
            EvolutionAddressBook book;
            QCOMPARE(access(book), allowed);
            QCOMPARE(names(book), read ? QStringList{"Anna"} : QStringList());
        };
        const auto error = [](const QString &kind) {
            return [kind](const QDBusMessage &call) {
                return call.createErrorReply("org.freedesktop.DBus.Error." + kind, "no");
            };
        };
        const auto values = [](const QVariantList &list) {
            return [list](const QDBusMessage &call) { return call.createReply(list); };
        };
        check("denied", "GetManagedObjects", error("AccessDenied"), false, false);
        check("no sources", "GetManagedObjects", error("Failed"));
        check("sources of another shape", "GetManagedObjects", values({QStringList{"a"}}));
        check("sources of no shape", "GetManagedObjects", values({}));
        check("a book that isn't there", "OpenAddressBook", error("Failed"));
        check("half a place", "OpenAddressBook", values({"/a"}));
        check("a place that can't be", "OpenAddressBook", values({"not a path", "not a name"}));
        check("a place of numbers", "OpenAddressBook", values({1, 2}));
        check("a book that says it is open already", "Open", error("Failed"), true);
        check("a book too large for the bus", "GetContactList", error("LimitsExceeded"));
        check("cards as a number", "GetContactList", values({5}));
    }

    void picturesAreReadFromItsOwnFolderAlone() {
        const QString own = dataFolder() + "/evolution/addressbook/system/photos/a";
        const QString other = dataFolder() + "/secret";
        write(own, "picture");
        write(other, "secret");
        QVERIFY(QFile::link(other, own + "-link"));
        const auto with = [](const QString &name, const QString &address) {
            return card(name, "1", u"PHOTO;VALUE=uri:%1\r\n"_s.arg(address));
        };
        const DataServer server({with("A", "file://" + own), with("B", "file://" + other),
                                 with("C", "file://" + own + "-link"),
                                 with("D", "file://" + own + "/../../../../../secret"),
                                 with("E", "file:///dev/zero"), with("F", "https://example.org/a")});
        EvolutionAddressBook book;
        QCOMPARE(names(book), (QStringList{"A picture", "B", "C", "D", "E", "F"}));
    }

    void aServerThatDiesMeanwhile() {
        auto server = std::make_unique<DataServer>(QStringList{card("Anna", "1")});
        server->scripted = "GetContactList";
        server->script = [&server](const QDBusMessage &) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [&server] { server.reset(); }, Qt::QueuedConnection);
            return QDBusMessage();
        };
        EvolutionAddressBook book;
        QCOMPARE(names(book), QStringList());
        QVERIFY(!server);
    }

private:
    SessionBus m_bus;
};

ORVANE_TEST_MAIN(TestAddressBook)
#include "tst_address_book.moc"

// SPDX-License-Identifier: MIT
#include "Platform/DesktopAddressBook.h"
#include "Platform/EvolutionSources.h"
#include "Support/Await.h"
#include "Support/SessionBus.h"
#include "Support/TestMain.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

using namespace orvane;
using namespace Qt::StringLiterals;

using Objects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;

namespace {

QByteArray card(const QByteArray &given, const QByteArray &number) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:;" + given + ";;;\r\nTEL:" + number + "\r\nEND:VCARD\r\n";
}

void write(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
}

QString dataFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QStringList names(AddressBook &book) {
    const QList<AddressBookPerson> people = *outcomeOf(book.people()).value;
    QStringList result;
    for (const AddressBookPerson &person : people)
        result << person.givenName + u" "_s.repeated(person.picture.isEmpty() ? 0 : 1) +
                      QString::fromUtf8(person.picture);
    return result;
}

bool access(AddressBook &book) {
    return *outcomeOf(book.requestAccess()).value;
}

// Evolution Data Server's interfaces, in the shapes that its release 3.46 was seen to use.
class DataServer : public QDBusVirtualObject {
    Q_OBJECT

public:
    DataServer()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"eds"_s)) {
        m_bus.registerVirtualObject(root, this, QDBusConnection::SubPath);
        m_bus.registerService(u"org.gnome.evolution.dataserver.Sources5"_s);
        m_bus.registerService(u"org.gnome.evolution.dataserver.AddressBook10"_s);
    }
    ~DataServer() override {
        // What has arrived and was not yet handled refers to the connection.
        m_bus.unregisterObject(root, QDBusConnection::UnregisterTree);
        QCoreApplication::removePostedEvents(this);
        QDBusConnection::disconnectFromBus(u"eds"_s);
    }

    QStringList cards;
    QStringList called;
    /// Of the method of that name: what it answers instead, with an error's name before its text.
    QString scripted;
    QString error;
    QVariantList values;
    std::function<void()> whenAskedForCards;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &) override {
        const QString question =
            call.path().mid(root.size()) + u' ' + call.interface().section(u'.', -1) + u'.' + call.member();
        called << question;
        if (call.member() == scripted)
            m_bus.send(error.isEmpty() ? call.createReply(values) : call.createErrorReply(error, u"no"_s));
        else if (question == u"/SourceManager ObjectManager.GetManagedObjects"_s)
            m_bus.send(call.createReply(QVariant::fromValue(objects())));
        else if (question == u"/AddressBookFactory AddressBookFactory.OpenAddressBook"_s)
            m_bus.send(call.createReply(
                {root + u"/Subprocess/1/2"_s, u"org.gnome.evolution.dataserver.AddressBook10"_s}));
        else if (question == u"/Subprocess/1/2 AddressBook.Open"_s)
            m_bus.send(call.createReply(QStringList{u"writable"_s, u"true"_s}));
        else if (question == u"/Subprocess/1/2 AddressBook.GetContactList"_s && whenAskedForCards)
            whenAskedForCards();
        else if (question == u"/Subprocess/1/2 AddressBook.GetContactList"_s)
            m_bus.send(call.createReply(cards));
        else
            m_bus.send(call.createReply());
        return true;
    }

private:
    static Objects objects() {
        const QVariantMap book{
            {u"UID"_s, u"system"_s},
            {u"Data"_s, u"[Data Source]\nEnabled=true\n\n[Address Book]\nBackendName=local\n"_s}};
        const QVariantMap calendar{{u"UID"_s, u"c"_s},
                                   {u"Data"_s, u"[Data Source]\nEnabled=true\n[Calendar]\n"_s}};
        const QString source = u"org.gnome.evolution.dataserver.Source"_s;
        return {{QDBusObjectPath(root + u"/SourceManager/Source"_s), {{source, book}}},
                {QDBusObjectPath(root + u"/SourceManager/Source_1"_s), {{source, calendar}}},
                {QDBusObjectPath(root + u"/SourceManager/Source_2"_s), {{u"another.Interface"_s, {}}}}};
    }

    static inline const QString root = u"/org/gnome/evolution/dataserver"_s;
    QDBusConnection m_bus;
};

// This process looks like somebody else's to whoever asks about permissions, the superuser's included.
class AsNobody {
public:
    AsNobody() {
        if (m_real == 0 && setreuid(65534, uid_t(-1)) != 0)
            qFatal("cannot become nobody");
    }
    ~AsNobody() {
        if (m_real == 0 && setreuid(m_real, uid_t(-1)) != 0)
            qFatal("cannot become oneself again");
    }
    AsNobody(const AsNobody &) = delete;
    AsNobody &operator=(const AsNobody &) = delete;

private:
    uid_t m_real = getuid();
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
    void sources_data();
    void sources();
    void foldersAreReadWithAllWithin();
    void aClosedFolderIsRefused();
    void withoutAnythingThereIsNobody();
    void theDataServerComesFirst();
    void answersOfTheDataServer_data();
    void answersOfTheDataServer();
    void picturesAreReadFromItsOwnFolderAlone();
    void aServerThatDiesMeanwhile();

private:
    SessionBus m_bus;
};

void TestAddressBook::sources_data() {
    QTest::addColumn<QString>("keyFile");
    QTest::addColumn<bool>("counts");
    QTest::newRow("plain") << u"[Data Source]\nEnabled=true\n[Address Book]\nBackendName=local"_s << true;
    QTest::newRow("says nothing") << u"[Address Book]"_s << true;
    QTest::newRow("a calendar") << u"[Data Source]\nEnabled=true\n[Calendar]\nBackendName=local"_s << false;
    QTest::newRow("off") << u"[Data Source]\nEnabled=false\n[Address Book]\nBackendName=local"_s << false;
    QTest::newRow("of an account that is off")
        << u"[Data Source]\nParent=child-of-off\n[Address Book]\n"_s << false;
    QTest::newRow("its own parent") << u"[Data Source]\nParent=book\n[Address Book]\n"_s << true;
    QTest::newRow("of an unknown account") << u"[Data Source]\nParent=x\n[Address Book]\n"_s << true;
    QTest::newRow("a directory") << u"[Address Book]\nBackendName=ldap"_s << false;
    QTest::newRow("translated and odd lines")
        << u"# c\n[Data Source]\nEnabled[ru]=false\n=\n[\nEnabled=false\n\r\n[Address Book]\r\nBackendName = x\r\n"_s
        << true;
    QTest::newRow("nothing") << QString() << false;
}

void TestAddressBook::sources() {
    QFETCH(QString, keyFile);
    QFETCH(bool, counts);
    const QHash<QString, QString> all{{u"book"_s, keyFile},
                                      {u"child-of-off"_s, u"[Data Source]\nParent=off\n"_s},
                                      {u"off"_s, u"[Data Source]\nEnabled=false\n"_s}};
    QCOMPARE(evolutionAddressBooks(all), counts ? QStringList{u"book"_s} : QStringList{});
}

void TestAddressBook::foldersAreReadWithAllWithin() {
    write(dataFolder() + u"/OrvaneTalk/contacts/a.vcf"_s, card("Anna", "1") + card("Ben", "2"));
    write(dataFolder() + u"/contacts/family/b.VCF"_s, card("Carl", "3"));
    write(dataFolder() + u"/contacts/std.vcard"_s, card("Dora", "4"));
    write(dataFolder() + u"/contacts/notes.txt"_s, card("Nobody", "5"));
    write(dataFolder() + u"/contacts/broken.vcf"_s, "BEGIN:VCARD\r\nN:;Cut\r\nTEL:1");
    // To open a pipe would wait for ever.
    QCOMPARE(mkfifo(qPrintable(dataFolder() + u"/contacts/pipe.vcf"_s), 0600), 0);
    QVERIFY(QFile::link(dataFolder() + u"/contacts"_s, dataFolder() + u"/contacts/round"_s));
    VCardFolder book;
    QVERIFY(access(book));
    QCOMPARE(names(book), (QStringList{u"Anna"_s, u"Ben"_s, u"Carl"_s, u"Dora"_s}));
}

void TestAddressBook::aClosedFolderIsRefused() {
    const QString folder = dataFolder() + u"/contacts"_s;
    QVERIFY(QDir().mkpath(folder));
    VCardFolder book({folder, dataFolder() + u"/none"_s});
    QVERIFY(access(book));
    QVERIFY(QFile::setPermissions(folder, QFile::WriteOwner));
    {
        const AsNobody nobody;
        QVERIFY(!access(book));
    }
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestAddressBook::withoutAnythingThereIsNobody() {
    DesktopAddressBook book;
    QVERIFY(access(book));
    QCOMPARE(names(book), QStringList{});
    EvolutionAddressBook offline(QDBusConnection(u"no bus"_s));
    QVERIFY(access(offline));
    QCOMPARE(names(offline), QStringList{});
}

void TestAddressBook::theDataServerComesFirst() {
    write(dataFolder() + u"/contacts/b.vcf"_s, card("Carl", "3"));
    DesktopAddressBook book;
    QCOMPARE(names(book), QStringList{u"Carl"_s});
    DataServer server;
    server.cards = {QString::fromUtf8(card("Anna", "1")), u"broken"_s, QString::fromUtf8(card("Ben", "2"))};
    QVERIFY(access(book));
    QCOMPARE(names(book), (QStringList{u"Anna"_s, u"Ben"_s}));
    QTRY_VERIFY(server.called.contains(u"/Subprocess/1/2 AddressBook.Close"_s));
    // Somebody who installed it and keeps their cards elsewhere.
    server.cards.clear();
    QCOMPARE(names(book), QStringList{u"Carl"_s});
}

void TestAddressBook::answersOfTheDataServer_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<bool>("read");
    const auto error = [](const char *name, const QString &method, const QString &text, bool allowed,
                          bool read) {
        QTest::newRow(name) << method << text << QVariantList{} << allowed << read;
    };
    const auto values = [](const char *name, const QString &method, const QVariantList &list, bool read) {
        QTest::newRow(name) << method << QString() << list << true << read;
    };
    const QString denied = u"org.freedesktop.DBus.Error.AccessDenied"_s;
    const QString failed = u"org.freedesktop.DBus.Error.Failed"_s;
    error("denied", u"GetManagedObjects"_s, denied, false, false);
    error("no sources", u"GetManagedObjects"_s, failed, true, false);
    values("sources of another shape", u"GetManagedObjects"_s, {QStringList{u"a"_s}}, false);
    values("sources of no shape", u"GetManagedObjects"_s, {}, false);
    error("a book that isn't there", u"OpenAddressBook"_s, failed, true, false);
    values("half a place", u"OpenAddressBook"_s, {u"/a"_s}, false);
    values("a place that can't be", u"OpenAddressBook"_s, {u"not a path"_s, u"not a name"_s}, false);
    values("a place of numbers", u"OpenAddressBook"_s, {1, 2}, false);
    error("a book that says it is open already", u"Open"_s, failed, true, true);
    error("a book too large for the bus", u"GetContactList"_s, u"org.freedesktop.DBus.Error.LimitsExceeded"_s,
          true, false);
    values("cards as a number", u"GetContactList"_s, {5}, false);
}

void TestAddressBook::answersOfTheDataServer() {
    QFETCH(QString, method);
    QFETCH(QString, error);
    QFETCH(QVariantList, values);
    QFETCH(bool, allowed);
    QFETCH(bool, read);
    DataServer server;
    server.cards = {QString::fromUtf8(card("Anna", "1"))};
    server.scripted = method;
    server.error = error;
    server.values = values;
    EvolutionAddressBook book;
    QCOMPARE(access(book), allowed);
    QCOMPARE(names(book), read ? QStringList{u"Anna"_s} : QStringList{});
}

void TestAddressBook::picturesAreReadFromItsOwnFolderAlone() {
    const QString own = dataFolder() + u"/evolution/addressbook/system/photos/a"_s;
    const QString other = dataFolder() + u"/secret"_s;
    write(own, "picture");
    write(other, "secret");
    QVERIFY(QFile::link(other, own + u"-link"_s));
    DataServer server;
    const auto cardWith = [](const QString &name, const QString &address) {
        return u"BEGIN:VCARD\r\nN:;%1\r\nPHOTO;VALUE=uri:%2\r\nEND:VCARD\r\n"_s.arg(name, address);
    };
    server.cards = {cardWith(u"A"_s, u"file://"_s + own),
                    cardWith(u"B"_s, u"file://"_s + other),
                    cardWith(u"C"_s, u"file://"_s + own + u"-link"_s),
                    cardWith(u"D"_s, u"file://"_s + own + u"/../../../../../secret"_s),
                    cardWith(u"E"_s, u"file:///dev/zero"_s),
                    cardWith(u"F"_s, u"https://example.org/a"_s)};
    EvolutionAddressBook book;
    QCOMPARE(names(book), (QStringList{u"A picture"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s}));
}

void TestAddressBook::aServerThatDiesMeanwhile() {
    auto server = std::make_unique<DataServer>();
    server->cards = {QString::fromUtf8(card("Anna", "1"))};
    server->whenAskedForCards = [&server] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [&server] { server.reset(); }, Qt::QueuedConnection);
    };
    EvolutionAddressBook book;
    QCOMPARE(names(book), QStringList{});
    QVERIFY(!server);
}

ORVANE_TEST_MAIN(TestAddressBook)
#include "tst_address_book.moc"

// SPDX-License-Identifier: MIT
#include "QueueDesk.h"
#include "Support/Await.h"
#include "Support/TestMain.h"

#include <QJsonDocument>

using namespace orvane;
using namespace Qt::StringLiterals;

class TestOfflineQueueFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileOfAnotherImplementationIsRead();
    void everyCharacterComesBack();
    void theFirstSaveMakesKeyAndFolder();
    void whatCanNotBeOpenedStays_data();
    void whatCanNotBeOpenedStays();
    void aFileCutAnywhereStays();
    void theNextSaveWritesOverWhatCouldNotBeOpened();
    void aSaveThatFailsCostsNothing_data();
    void aSaveThatFailsCostsNothing();
    void anEarlierVersionsFileIsTakenOver_data();
    void anEarlierVersionsFileIsTakenOver();
    void anEarlierVersionsFileThatIsNoneStays_data();
    void anEarlierVersionsFileThatIsNoneStays();
};

namespace {

const QString couldNotBeOpened = u"Encrypted queue could not be opened"_s;

QByteArray listOf(const QJsonObject &message) {
    return QJsonDocument(QJsonArray{message}).toJson(QJsonDocument::Compact);
}

QJsonObject goodMessage() {
    return json::parse(queueform::encode({queued(u"m"_s)})).toArray().first().toObject();
}

} // namespace

void TestOfflineQueueFile::aFileOfAnotherImplementationIsRead() {
    const auto fixture = json::parseObject(QueueDesk::read(u"" FIXTURES "/queue.json"_s)).value();
    QueueDesk desk;
    desk.secrets->items[desk.account] = QByteArray::fromHex(json::text(fixture, u"key")->toLatin1());
    const QByteArray file = QByteArray::fromHex(json::text(fixture, u"file")->toLatin1());
    QueueDesk::write(desk.sealedFile(), file);
    QCOMPARE(desk.startAndEnd(), QStringList{u"Loaded 2 encrypted queued messages"_s});
    QCOMPARE(QueueDesk::read(desk.sealedFile()), file);
    FaultySecretStore store(desk.secrets);
    const QList<QueuedMessage> read = QueueFile(desk.folder.path(), store).loadFromDisk();
    QCOMPARE(json::parse(queueform::encode(read)).toArray(), json::list(fixture, u"messages").value());
}

void TestOfflineQueueFile::everyCharacterComesBack() {
    QueuedMessage message = queued(u"m"_s, -1, std::numeric_limits<qint64>::max());
    message.content = u"\\u0041\\ 👋"_s;
    for (char16_t character = 0; character < 0x200; ++character)
        message.content += QChar(character);
    message.timestamp = QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC);
    const QByteArray json = queueform::encode({message, queued(u"n"_s)});
    QCOMPARE(queueform::decode(json), (QList{message, queued(u"n"_s)}));
}

void TestOfflineQueueFile::theFirstSaveMakesKeyAndFolder() {
    QueueDesk desk;
    desk.secrets->items.clear();
    QVERIFY(QDir(desk.folder.path()).removeRecursively());
    desk.start();
    desk.enqueue(queued(u"m"_s));
    QCOMPARE(desk.log.lines(), QStringList{u"Queued 1 messages — will send when online"_s});
    const QByteArray key = desk.secrets->items.value(desk.account);
    QCOMPARE(key.size(), 32);
    QCOMPARE(desk.secrets->labels.value(desk.account), u"OrvaneTalk encrypted offline queue"_s);
    const QByteArray file = QueueDesk::read(desk.sealedFile());
    QVERIFY(file.startsWith("OTQ1") && !file.contains("words"));
    QCOMPARE(QFile::permissions(desk.sealedFile()) & (QFile::ReadGroup | QFile::ReadOther), 0);
    const SecretBytes plain = primitives::open(key, queueform::boxOf(file));
    QCOMPARE(queueform::decode(plain.view().toByteArray()), QList{queued(u"m"_s)});
    // A nonce is used once.
    QVERIFY(desk.sealed("[]") != desk.sealed("[]"));
}

void TestOfflineQueueFile::whatCanNotBeOpenedStays_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<bool>("storeFails");
    const QueueDesk desk;
    const QByteArray good = desk.sealed(queueform::encode({queued(u"m"_s)}));
    const auto row = [&](const QByteArray &name, const QByteArray &file) {
        QTest::newRow(name.constData()) << file << desk.key << false;
    };
    row("nothing", "");
    row("the magic alone", "OTQ1");
    row("another magic", "OTQ2" + good.mid(4));
    row("the list in the clear", queueform::encode({queued(u"m"_s)}));
    row("one bit turned", QByteArray(good).replace(20, 1, QByteArray(1, char(good[20] ^ 1))));
    row("one byte more", good + '\0');
    row("no JSON", desk.sealed("[{]"));
    row("no list", desk.sealed(json::compact(goodMessage())));
    for (const QString &key : goodMessage().keys()) {
        QJsonObject message = goodMessage();
        message[key] = QJsonArray();
        row("mistyped " + key.toUtf8(), desk.sealed(listOf(message)));
        message.remove(key);
        row("without " + key.toUtf8(), desk.sealed(listOf(message)));
    }
    QTest::newRow("another key") << good << QByteArray(32, 'x') << false;
    QTest::newRow("a key of another size") << good << QByteArray(31, 'k') << false;
    QTest::newRow("no key") << good << QByteArray() << false;
    QTest::newRow("no keyring") << good << desk.key << true;
}

void TestOfflineQueueFile::whatCanNotBeOpenedStays() {
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, key);
    QFETCH(bool, storeFails);
    QueueDesk desk;
    desk.secrets->items[desk.account] = key;
    if (key.isNull())
        desk.secrets->items.clear();
    desk.secrets->failingCall = storeFails ? 0 : -1;
    const QByteArray legacy = queueform::encode({queued(u"old"_s)});
    QueueDesk::write(desk.sealedFile(), file);
    QueueDesk::write(desk.legacyFile(), legacy);
    QCOMPARE(desk.startAndEnd(), QStringList{couldNotBeOpened});
    QCOMPARE(QueueDesk::read(desk.sealedFile()), file);
    QCOMPARE(QueueDesk::read(desk.legacyFile()), legacy);
    if (!key.isNull())
        QCOMPARE(desk.secrets->items.value(desk.account), key);
}

void TestOfflineQueueFile::aFileCutAnywhereStays() {
    QueueDesk desk;
    FaultySecretStore store(desk.secrets);
    const QueueFile file(desk.folder.path(), store);
    const QByteArray whole = desk.sealed(queueform::encode({queued(u"m"_s)}));
    for (qsizetype size = 0; size < whole.size(); ++size) {
        QueueDesk::write(desk.sealedFile(), whole.first(size));
        QCOMPARE(file.loadFromDisk(), QList<QueuedMessage>());
        QCOMPARE(desk.log.lines().size(), size + 1);
        QCOMPARE(desk.log.lines().last(), couldNotBeOpened);
        QCOMPARE(QueueDesk::read(desk.sealedFile()), whole.first(size));
    }
}

void TestOfflineQueueFile::theNextSaveWritesOverWhatCouldNotBeOpened() {
    QueueDesk desk;
    QueueDesk::write(desk.sealedFile(), "OTQ1");
    QueueDesk::write(desk.legacyFile(), queueform::encode({queued(u"old"_s)}));
    desk.start();
    desk.enqueue(queued(u"m"_s));
    QCOMPARE(desk.saved(), QList{queued(u"m"_s)});
    QVERIFY(!QFile::exists(desk.legacyFile()));
}

void TestOfflineQueueFile::aSaveThatFailsCostsNothing_data() {
    QTest::addColumn<Obstacle>("obstacle");
    QTest::newRow("a keyring that vanished") << Obstacle::storeRefuses;
    QTest::newRow("a read-only folder") << Obstacle::readOnlyFolder;
    QTest::newRow("a full disk") << Obstacle::fullDisk;
}

void TestOfflineQueueFile::aSaveThatFailsCostsNothing() {
    QFETCH(Obstacle, obstacle);
    QueueDesk desk;
    QueuedMessage large = queued(u"large"_s);
    large.content = large.content.repeated(1000);
    desk.save({queued(u"first"_s)});
    const QByteArray before = QueueDesk::read(desk.sealedFile());
    desk.start();
    // The load is over.
    desk.enqueue(queued(u"second"_s));
    const QByteArray saved = QueueDesk::read(desk.sealedFile());
    QVERIFY(saved != before);
    {
        const Obstructed obstructed(obstacle, desk.folder.path(), *desk.secrets);
        desk.enqueue(large);
    }
    QCOMPARE(desk.log.lines().mid(2),
             (QStringList{u"Encrypted queue save failed"_s, u"Queued 3 messages — will send when online"_s}));
    QCOMPARE(QueueDesk::read(desk.sealedFile()), saved);
    QCOMPARE(QDir(desk.folder.path()).entryList(QDir::Files), QStringList{u"offline_queue.enc"_s});
    desk.enqueue(queued(u"fourth"_s));
    QCOMPARE(desk.saved(), (QList{queued(u"first"_s), queued(u"second"_s), large, queued(u"fourth"_s)}));
}

void TestOfflineQueueFile::anEarlierVersionsFileIsTakenOver_data() {
    QTest::addColumn<Obstacle>("obstacle");
    QTest::newRow("at once") << Obstacle::nothing;
    QTest::newRow("no keyring yet") << Obstacle::storeRefuses;
    QTest::newRow("a read-only folder") << Obstacle::readOnlyFolder;
    QTest::newRow("a full disk") << Obstacle::fullDisk;
}

void TestOfflineQueueFile::anEarlierVersionsFileIsTakenOver() {
    QFETCH(Obstacle, obstacle);
    QueueDesk desk;
    QueuedMessage large = queued(u"large"_s);
    large.content = large.content.repeated(1000);
    const QByteArray legacy = queueform::encode({large, queued(u"m"_s)});
    QueueDesk::write(desk.legacyFile(), legacy);
    {
        const Obstructed obstructed(obstacle, desk.folder.path(), *desk.secrets);
        desk.start();
        QTRY_COMPARE(desk.log.lines().size(), 1);
    }
    if (obstacle == Obstacle::nothing) {
        QCOMPARE(desk.log.lines(), QStringList{u"Migrated 2 queued messages to encrypted storage"_s});
        QCOMPARE(desk.saved(), (QList{large, queued(u"m"_s)}));
    } else {
        QCOMPARE(desk.log.lines(), QStringList{u"Encryption migration deferred"_s});
        QCOMPARE(QueueDesk::read(desk.legacyFile()), legacy);
        QVERIFY(!QFile::exists(desk.sealedFile()));
    }
    desk.enqueue(queued(u"new"_s));
    QCOMPARE(desk.saved(), (QList{large, queued(u"m"_s), queued(u"new"_s)}));
    QVERIFY(!QFile::exists(desk.legacyFile()));
}

void TestOfflineQueueFile::anEarlierVersionsFileThatIsNoneStays_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("cut") << queueform::encode({queued(u"m"_s)}).chopped(1);
    QTest::newRow("no list") << QByteArray("{}");
    QTest::newRow("a message with a key less") << QByteArray(R"([{"id":"m"}])");
    QTest::newRow("one bad among good ones")
        << queueform::encode({queued(u"m"_s)}).chopped(1).append(",null]");
}

void TestOfflineQueueFile::anEarlierVersionsFileThatIsNoneStays() {
    QFETCH(QByteArray, file);
    QueueDesk desk;
    QueueDesk::write(desk.legacyFile(), file);
    QCOMPARE(desk.startAndEnd(), QStringList());
    QCOMPARE(QueueDesk::read(desk.legacyFile()), file);
    QVERIFY(!QFile::exists(desk.sealedFile()));
}

ORVANE_TEST_MAIN(TestOfflineQueueFile)
#include "tst_offline_queue_file.moc"

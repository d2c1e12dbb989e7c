// SPDX-License-Identifier: MIT
#include "QueueDesk.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QJsonDocument>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const QString couldNotBeOpened = u"Encrypted queue could not be opened"_s;

QueuedMessage large() {
    QueuedMessage message = queued(u"large"_s);
    message.content = message.content.repeated(1000);
    return message;
}

} // namespace

class TestOfflineQueueFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFileOfAnotherImplementationIsRead() {
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

    void everyCharacterComesBack() {
        QueuedMessage message = queued(u"m"_s, -1, std::numeric_limits<qint64>::max());
        message.content = u"\\u0041\\ 👋"_s;
        for (char16_t character = 0; character < 0x200; ++character)
            message.content += QChar(character);
        message.timestamp = QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC);
        const QByteArray json = queueform::encode({message, queued(u"n"_s)});
        QCOMPARE(queueform::decode(json), (QList{message, queued(u"n"_s)}));
    }

    void theFirstSaveMakesKeyAndFolder() {
        QueueDesk desk;
        desk.secrets->items.clear();
        QVERIFY(QDir(desk.folder.path()).removeRecursively());
        desk.start();
        desk.enqueue(queued(u"m"_s));
        QCOMPARE(desk.log.lines(), QStringList{u"Queued 1 messages — will send when online"_s});
        const QByteArray key = desk.secrets->items.value(desk.account);
        QCOMPARE(key.size(), 32);
        QCOMPARE(desk.secrets->labels.value(desk.account), "OrvaneTalk encrypted offline queue");
        const QByteArray file = QueueDesk::read(desk.sealedFile());
        QVERIFY(file.startsWith("OTQ1") && !file.contains("words"));
        QCOMPARE(QFile::permissions(desk.sealedFile()) & (QFile::ReadGroup | QFile::ReadOther), 0);
        QCOMPARE(desk.saved(key), QList{queued(u"m"_s)});
        // A nonce is used once.
        QVERIFY(desk.sealed("[]") != desk.sealed("[]"));
    }

    void whatCanNotBeOpenedStays() {
        const auto row = [](const QByteArray &name, const QByteArray &file,
                            const QByteArray &key = QByteArray(32, 'k'), int failingCall = -1) {
            const InRow named(name);
            QueueDesk desk;
            desk.secrets->items[desk.account] = key;
            if (key.isNull())
                desk.secrets->items.clear();
            desk.secrets->failingCall = failingCall;
            const QByteArray legacy = queueform::encode({queued(u"old"_s)});
            QueueDesk::write(desk.sealedFile(), file);
            QueueDesk::write(desk.legacyFile(), legacy);
            QCOMPARE(desk.startAndEnd(), QStringList{couldNotBeOpened});
            QCOMPARE(QueueDesk::read(desk.sealedFile()), file);
            QCOMPARE(QueueDesk::read(desk.legacyFile()), legacy);
            if (!key.isNull())
                QCOMPARE(desk.secrets->items.value(desk.account), key);
        };
        const QByteArray list = queueform::encode({queued(u"m"_s)});
        const QByteArray good = QueueDesk().sealed(list);
        row("nothing", "");
        row("the magic alone", "OTQ1");
        row("another magic", "OTQ2" + good.mid(4));
        row("the list in the clear", list);
        row("one bit turned", QByteArray(good).replace(20, 1, QByteArray(1, char(good[20] ^ 1))));
        row("one byte more", good + '\0');
        row("no JSON", QueueDesk().sealed("[{]"));
        const QJsonObject message = json::parse(list).toArray().first().toObject();
        row("no list", QueueDesk().sealed(json::compact(message)));
        for (const QString &key : message.keys()) {
            const auto sealed = [](const QJsonObject &one) {
                return QueueDesk().sealed('[' + json::compact(one) + ']');
            };
            QJsonObject changed = message;
            changed[key] = QJsonArray();
            row("mistyped " + key.toUtf8(), sealed(changed));
            changed.remove(key);
            row("without " + key.toUtf8(), sealed(changed));
        }
        row("another key", good, QByteArray(32, 'x'));
        row("a key of another size", good, QByteArray(31, 'k'));
        row("no key", good, QByteArray());
        row("no keyring", good, QByteArray(32, 'k'), 0);
    }

    void aFileCutAnywhereStays() {
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

    void theNextSaveWritesOverWhatCouldNotBeOpened() {
        QueueDesk desk;
        QueueDesk::write(desk.sealedFile(), "OTQ1");
        QueueDesk::write(desk.legacyFile(), queueform::encode({queued(u"old"_s)}));
        desk.start();
        desk.enqueue(queued(u"m"_s));
        QCOMPARE(desk.saved(), QList{queued(u"m"_s)});
        QVERIFY(!QFile::exists(desk.legacyFile()));
    }

    void aSaveThatFailsCostsNothing() {
        for (const Obstacle obstacle : {Obstacle::storeRefuses, Obstacle::fullDisk}) {
            const InRow row(QByteArray::number(int(obstacle)));
            QueueDesk desk;
            desk.save({queued(u"first"_s)});
            const QByteArray before = QueueDesk::read(desk.sealedFile());
            desk.start();
            // The load is over.
            desk.enqueue(queued(u"second"_s));
            const QByteArray saved = QueueDesk::read(desk.sealedFile());
            QVERIFY(saved != before);
            {
                const Obstructed obstructed(obstacle, *desk.secrets);
                desk.enqueue(large());
            }
            QCOMPARE(desk.log.lines().mid(2), (QStringList{u"Encrypted queue save failed"_s,
                                                           u"Queued 3 messages — will send when online"_s}));
            QCOMPARE(QueueDesk::read(desk.sealedFile()), saved);
            QCOMPARE(QDir(desk.folder.path()).entryList(QDir::Files), QStringList{u"offline_queue.enc"_s});
            desk.enqueue(queued(u"fourth"_s));
            QCOMPARE(desk.saved(),
                     (QList{queued(u"first"_s), queued(u"second"_s), large(), queued(u"fourth"_s)}));
        }
    }

    void anEarlierVersionsFileIsTakenOver() {
        for (const Obstacle obstacle : {Obstacle::nothing, Obstacle::storeRefuses, Obstacle::fullDisk}) {
            const InRow row(QByteArray::number(int(obstacle)));
            QueueDesk desk;
            const QByteArray legacy = queueform::encode({large(), queued(u"m"_s)});
            QueueDesk::write(desk.legacyFile(), legacy);
            {
                const Obstructed obstructed(obstacle, *desk.secrets);
                desk.start();
                QTRY_COMPARE(desk.log.lines().size(), 1);
            }
            if (obstacle == Obstacle::nothing) {
                QCOMPARE(desk.log.lines(), QStringList{u"Migrated 2 queued messages to encrypted storage"_s});
                QCOMPARE(desk.saved(), (QList{large(), queued(u"m"_s)}));
                QTRY_VERIFY(!QFile::exists(desk.legacyFile()));
            } else {
                QCOMPARE(desk.log.lines(), QStringList{u"Encryption migration deferred"_s});
                QCOMPARE(QueueDesk::read(desk.legacyFile()), legacy);
                QVERIFY(!QFile::exists(desk.sealedFile()));
            }
            desk.enqueue(queued(u"new"_s));
            QCOMPARE(desk.saved(), (QList{large(), queued(u"m"_s), queued(u"new"_s)}));
            QVERIFY(!QFile::exists(desk.legacyFile()));
        }
    }

    void anEarlierVersionsFileThatIsNoneStays() {
        const QByteArray cut = queueform::encode({queued(u"m"_s)}).chopped(1);
        for (const QByteArray &file : {""_ba, cut, "{}"_ba, R"([{"id":"m"}])"_ba, cut + ",null]"}) {
            const InRow row(file);
            QueueDesk desk;
            QueueDesk::write(desk.legacyFile(), file);
            QCOMPARE(desk.startAndEnd(), QStringList());
            QCOMPARE(QueueDesk::read(desk.legacyFile()), file);
            QVERIFY(!QFile::exists(desk.sealedFile()));
        }
    }
};

ORVANE_TEST_MAIN(TestOfflineQueueFile)
#include "tst_offline_queue_file.moc"

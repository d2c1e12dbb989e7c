// SPDX-License-Identifier: MIT
#include "Platform/ChosenSecretStore.h"
#include "Platform/FileSecretStore.h"
#include "Support/FaultySecretStore.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QString service = "com.orvanetalk.test";
const QString account = "a";

constexpr qint32 present = SecretStatus::success;
constexpr qint32 gone = SecretStatus::notAvailable;
constexpr qint32 locked = SecretStatus::unanswered;

/// "add 1", "read" or "remove", and what came of it: "ok", the data, or why not.
QString done(SecretStore &store, const QString &action) {
    const SecretStore::Match match =
        action == "read" ? store.copyMatching(service, account)
        : action == "remove"
            ? SecretStore::Match{store.remove(service, account), "ok"}
            : SecretStore::Match{store.add(service, account, {}, action.mid(4).toUtf8()), "ok"};
    return match.status == SecretStatus::success        ? QString(match.data)
           : match.status == SecretStatus::itemNotFound ? u"nothing"_s
           : match.status == gone                       ? u"gone"_s
           : match.status == locked                     ? u"locked"_s
                                                        : QString::number(match.status);
}

} // namespace

class TestChosenSecretStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_keyring = std::make_shared<StoredSecrets>();
    }

    void everyStartFindsWhatItMay() {
        // What the keyring holds at first, each start with what is asked of it, and what the keyring holds
        // then.
        const auto check = [this](const char *name, const QByteArray &before, const QStringList &starts,
                                  const QByteArray &after) {
            IN_ROW(name);
            init();
            if (!before.isNull())
                m_keyring->items.insert(account, before);
            for (const QString &expected : starts) {
                const QString state = expected.section(": ", 0, 0);
                const QString action = expected.section(": ", 1).section(" = ", 0, 0);
                ChosenSecretStore store = start(state == "present" ? present
                                                : state == "gone"  ? gone
                                                                   : locked);
                QCOMPARE(state + ": " + action + " = " + done(store, action), expected);
            }
            QCOMPARE(m_keyring->items.value(account), after);
        };
        check("a keyring is taken where one answers", {}, {"present: add 1 = ok", "present: read = 1"}, "1");
        check("the file is taken where none answers", {},
              {"gone: remove = nothing", "gone: read = nothing", "gone: add 1 = ok", "gone: read = 1"}, {});
        check("a keyring that appears later hides nothing", {},
              {"gone: add 1 = ok", "present: read = 1", "present: add 2 = ok", "gone: read = 2",
               "present: remove = ok", "gone: read = nothing"},
              {});
        check("a keyring that is away for once is not replaced", {},
              {"present: add 1 = ok", "gone: read = gone", "gone: add 2 = gone", "gone: remove = gone",
               "present: read = 1"},
              "1");
        check("a locked keyring is not replaced by reading", "1",
              {"locked: read = locked", "locked: remove = locked", "present: read = 1"}, "1");
        // Open, the keyring is where things go, and what it lacks is still there.
        check("the first item goes to the file while the keyring is locked", {},
              {"locked: add 1 = ok", "locked: read = 1", "present: read = 1", "present: add 2 = ok",
               "present: read = 2"},
              "2");
        check("reading alone chooses nothing", {},
              {"gone: read = nothing", "gone: remove = nothing", "present: add 1 = ok"}, "1");
    }

    void fileIsUsedBesideTheKeyringOnceAllowed() {
        const QString other = "b";
        QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
        start(present).allowFile();
        for (const qint32 away : {gone, locked}) {
            ChosenSecretStore store = start(away);
            QCOMPARE(store.add(service, account, {}, "2"), SecretStatus::success);
            QCOMPARE(store.copyMatching(service, account).data, "2");
            // Behind a lock there may be one; where nothing is there is none.
            QCOMPARE(store.copyMatching(service, other).status,
                     away == locked ? locked : SecretStatus::itemNotFound);
            QCOMPARE(store.remove(service, other), away == locked ? locked : SecretStatus::itemNotFound);
        }
        ChosenSecretStore back = start(present);
        QCOMPARE(back.copyMatching(service, account).data, "1");
        m_keyring->items.clear();
        QCOMPARE(back.copyMatching(service, account).data, "2");
        QCOMPARE(back.add(service, account, {}, "3"), SecretStatus::success);
        QCOMPARE(back.remove(service, account), SecretStatus::success);
        QVERIFY(m_keyring->items.isEmpty());
        QCOMPARE(start(gone).copyMatching(service, account).status, SecretStatus::itemNotFound);
    }

    void otherFailuresOfTheKeyringAreNoReasonToFallBack() {
        m_keyring->failingCall = 0;
        QCOMPARE(start(present).add(service, account, {}, "1"), m_keyring->failure);
        QVERIFY(!QFile::exists(m_folder->filePath("secrets.json")));
        QCOMPARE(start(present).add(service, account, {}, "1"), SecretStatus::success);
        QCOMPARE(m_keyring->items.value(account), "1");
    }

    void damagedMarkersHideNoFile() {
        for (const auto &[marker, keyring] :
             {std::pair(" file \r\n", present), std::pair("", gone), std::pair("floppy\n", gone)}) {
            IN_ROW(marker);
            init();
            QCOMPARE(start(gone).add(service, account, {}, "1"), SecretStatus::success);
            QFile file(m_folder->filePath("secret-store"));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(marker);
            file.close();
            QCOMPARE(start(keyring).copyMatching(service, account).data, "1");
        }
    }

private:
    /// The store as a new start of the program finds it, beside a keyring that is there or says why not.
    ChosenSecretStore start(qint32 keyring) {
        m_keyring->always = keyring;
        return ChosenSecretStore(std::make_unique<FaultySecretStore>(m_keyring),
                                 std::make_unique<FileSecretStore>(m_folder->filePath("secrets.json")),
                                 m_folder->path());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<StoredSecrets> m_keyring;
};

ORVANE_TEST_MAIN(TestChosenSecretStore)
#include "tst_chosen_secret_store.moc"

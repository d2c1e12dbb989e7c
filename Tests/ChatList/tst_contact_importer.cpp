// SPDX-License-Identifier: MIT
#include "ChatList/People/ContactImporter.h"
#include "Support/Await.h"
#include "Support/ClientParts.h"
#include "Support/InRow.h"
#include "Support/KnownAddressBook.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

AddressBookPerson person(const QString &given, const QString &family, const QStringList &numbers) {
    AddressBookPerson result{given, family, {}, {}, {}};
    for (const QString &number : numbers)
        result.numbers.append({number, {}});
    return result;
}

struct Importer : ClientParts {
    KnownAddressBook *book = new KnownAddressBook;
    ContactImporter importer{std::unique_ptr<AddressBook>(book), api};

    Importer() { signIn(); }
};

const auto denied = u"Доступ к контактам запрещён. Разрешите в Настройках → Конфиденциальность → Контакты."_s;
const auto nobody = u"В адресной книге нет контактов для импорта."_s;

} // namespace

class TestContactImporter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void hashes();
    void records();
    void oneRecordANumber();
    void pictures();
    void whatEndsAnImport();
    void theServerIsToldOneByOne();
    void theFirstErrorEndsTheSync();
    void aSecondImportIsNotKeptFromStarting();
};

// The vectors of FIPS 180-4, and sha256sum's answer for letters beyond ASCII.
void TestContactImporter::hashes() {
    QCOMPARE(ContactImporter::sha256(QString()),
             u"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"_s);
    QCOMPARE(ContactImporter::sha256(u"abc"_s),
             u"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"_s);
    QCOMPARE(ContactImporter::sha256(u"Анна"_s),
             u"25f4b213274e11e1c2dde0e3c6f8c9fd264c86baf5eead720be98d91e728a330"_s);
}

void TestContactImporter::records() {
    const struct {
        const char *name;
        QList<AddressBookPerson> people;
        QStringList expected;
    } rows[] = {
        {"only digits count", {person(u"A"_s, u"B"_s, {u"+7 (900) 123"_s})}, {u"A B:7900123"_s}},
        {"a country code is not made up",
         {person(u"A"_s, {}, {u"+7 (900) 123"_s, u"8900123"_s})},
         {u"A:7900123"_s, u"A:8900123"_s}},
        {"written in two ways", {person(u"A"_s, {}, {u"+1 555"_s, u"1555"_s})}, {u"A:1555"_s}},
        {"no numbers", {person(u"A"_s, u"B"_s, {})}, {}},
        {"only punctuation", {person(u"A"_s, {}, {u"+ () -"_s, {}, u"#5"_s})}, {u"A:5"_s}},
        {"no name", {person(u" "_s, u"\t"_s, {u"1"_s})}, {}},
        {"only a family name", {person({}, u"B"_s, {u"1"_s})}, {u"B:1"_s}},
        {"a number on two cards",
         {person(u"Zoe"_s, {}, {u"1"_s}), person(u"Anna"_s, {}, {u"1"_s, u"2"_s})},
         {u"Anna:1"_s, u"Anna:2"_s}},
        {"by given name, and equal ones as they come",
         {person(u"Б"_s, u"2"_s, {u"1"_s}), person(u"А"_s, u"9"_s, {u"2"_s}),
          person(u"Б"_s, u"1"_s, {u"3"_s})},
         {u"А 9:2"_s, u"Б 2:1"_s, u"Б 1:3"_s}},
        {"digits of another script", {person(u"A"_s, {}, {u"٠١٢ 𝟏"_s})}, {u"A:٠١٢𝟏"_s}},
        {"right to left and emoji", {person(u"אבי"_s, u"👋🏽"_s, {u"1"_s})}, {u"אבי 👋🏽:1"_s}},
    };
    for (const auto &row : rows) {
        const InRow named(row.name);
        QStringList hashed;
        for (const QString &entry : row.expected)
            hashed << entry.section(u':', 0, 0) + u':' + sha256Text(entry.section(u':', 1));
        QStringList found;
        for (const ImportedContact &contact : importedContacts(row.people))
            found << contact.fullName + u':' + contact.hashedPhone;
        QCOMPARE(found, hashed);
    }
}

void TestContactImporter::oneRecordANumber() {
    AddressBookPerson anna{u"Anna"_s, u"V"_s, u"Acme"_s, {{u"1"_s, u"mobile"_s}, {u"2"_s, {}}}, "png"};
    const QList<ImportedContact> contacts = importedContacts({anna, person(u"Ben"_s, {}, {u"3"_s})});
    QCOMPARE(contacts.size(), 3);
    QCOMPARE(contacts.at(0).phoneLabel, u"mobile"_s);
    QCOMPARE(contacts.at(1).phoneLabel, QString());
    QCOMPARE(contacts.at(1).organization, u"Acme"_s);
    QCOMPARE(contacts.at(1).avatar, QByteArray("png"));
    QVERIFY(!contacts.at(2).organization && !contacts.at(2).avatar);
}

void TestContactImporter::pictures() {
    for (const auto &[picture, hash] : {std::pair("", ""),
                                        {"\xFF\xD8\xFF\xE0", "e3b0c44298fc1c14"},
                                        // Cut within a character.
                                        {"\xD0", "e3b0c44298fc1c14"},
                                        {"abc", "ba7816bf8f01cfea"}}) {
        const InRow row(picture);
        ImportedContact contact{u"A"_s, {}, u"A"_s, u"h"_s, {}, {}, {}};
        if (*picture)
            contact.avatar = picture;
        const ContactRecord record = contactRecord(contact);
        QCOMPARE(record.avatarHash.value_or(QString()), hash);
        QCOMPARE(record.id, u"h"_s);
        QCOMPARE(record.phoneHash, u"h"_s);
        QVERIFY(record.isFromAddressBook);
    }
}

void TestContactImporter::whatEndsAnImport() {
    const QList<AddressBookPerson> anna{person(u"A"_s, {}, {u"1"_s})};
    const struct {
        bool allowed;
        QList<AddressBookPerson> people;
        QString words;
    } rows[] = {{false, anna, denied},
                {true, {}, nobody},
                {true, {person(u"A"_s, {}, {u"-"_s})}, nobody},
                {true, anna, {}}};
    for (const auto &row : rows) {
        const InRow named(row.words.toUtf8());
        Importer test;
        test.importer.lastError = u"of an earlier one"_s;
        test.book->allowed = row.allowed;
        test.book->known = row.people;
        const auto outcome = outcomeOf(test.importer.importContacts());
        QCOMPARE(outcome.failure, row.words);
        QCOMPARE(test.importer.lastError.value().value_or(QString()), row.words);
        QCOMPARE(test.importer.importedCount.value(), row.words.isEmpty() ? 1 : 0);
        QVERIFY(!test.importer.isImporting);
        QCOMPARE(test.http.requests().size(), 0);
    }
}

void TestContactImporter::theServerIsToldOneByOne() {
    Importer test;
    AddressBookPerson anna{u"Anna"_s, u"V"_s, u"Acme"_s, {{u"+1 5"_s, {}}, {u"2"_s, {}}}, "\xFF"};
    test.book->known = {anna, person(u"Ben"_s, {}, {u"3"_s})};
    QCOMPARE(outcomeOf(test.importer.importAndSync()).failure, QString());
    QCOMPARE(test.requestsTo("/api/messenger/contacts/add"), 3);
    QCOMPARE(*json::parseObject(test.http.requests().at(0).body),
             (QJsonObject{{u"phone_hash"_s, sha256Text(u"15"_s)},
                          {u"display_name"_s, u"Anna V"_s},
                          {u"from_address_book"_s, true},
                          {u"organization"_s, u"Acme"_s},
                          {u"avatar_hash"_s, u"e3b0c44298fc1c14"_s}}));
    const QJsonObject ben = *json::parseObject(test.http.requests().at(2).body);
    QVERIFY(ben.value(u"organization"_s).isNull() && ben.value(u"avatar_hash"_s).isNull());
    // No number leaves the machine in the clear.
    for (const RecordedRequest &request : test.http.requests())
        QVERIFY(!request.body.contains("+1 5"));
}

void TestContactImporter::theFirstErrorEndsTheSync() {
    for (const auto &[answer, failure] : {std::pair(ScriptedAnswer::of(500, "{}"), u"api 500"_s),
                                          {ScriptedAnswer::truncated("{"), u"transport"_s}}) {
        const InRow row(failure.toUtf8());
        Importer test;
        test.book->known = {person(u"A"_s, {}, {u"1"_s, u"2"_s, u"3"_s})};
        test.http.answerNext(ScriptedAnswer::of(200, "{}"));
        test.http.answerNext(answer);
        QCOMPARE(outcomeOf(test.importer.importAndSync()).failure, failure);
        QCOMPARE(test.requestsTo("/api/messenger/contacts/add"), 2);
        // Without words of its own.
        QVERIFY(!test.importer.lastError.value());
        QVERIFY(!test.importer.isImporting);
    }
}

void TestContactImporter::aSecondImportIsNotKeptFromStarting() {
    Importer test;
    test.book->known = {person(u"A"_s, {}, {u"1"_s})};
    auto first = test.importer.importContacts();
    QVERIFY(test.importer.isImporting);
    auto second = test.importer.importContacts();
    QCOMPARE(outcomeOf(std::move(second)).value->size(), 1);
    QCOMPARE(outcomeOf(std::move(first)).value->size(), 1);
    QVERIFY(!test.importer.isImporting);
}

ORVANE_TEST_MAIN(TestContactImporter)
#include "tst_contact_importer.moc"

// SPDX-License-Identifier: MIT
#include "ChatList/People/MessengerContactListView.h"
#include "Support/ClientParts.h"
#include "Support/InRow.h"
#include "Support/KnownAddressBook.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const QByteArray contactsPath = "/api/messenger/contacts";
const QByteArray requestsPath = "/api/messenger/contacts/requests";
const QByteArray searchPath = "/api/messenger/users/search";

AddressBookPerson personWithNumber(const QString &name) {
    return {name, {}, {}, {{u"+7 (900) 123"_s, {}}}, {}};
}

struct Screen : ClientParts {
    KnownAddressBook *book = new KnownAddressBook;
    ContactImporter importer{std::unique_ptr<AddressBook>(book), api};
    std::shared_ptr<MessengerContactListView> view =
        std::make_shared<MessengerContactListView>(session, api, importer);

    Screen() {
        signIn();
        for (QAbstractItemModel *model :
             {static_cast<QAbstractItemModel *>(&view->contacts),
              static_cast<QAbstractItemModel *>(&view->incomingRequests), view->people()})
            new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                         view.get());
    }

    void load() {
        view->loadData();
        QTRY_VERIFY(!view->isLoading);
    }
    /// Everybody in the list, what was found before who is known.
    QStringList people() const {
        QStringList names;
        for (int row = 0; row < view->people()->rowCount(); ++row) {
            const QModelIndex index = view->people()->index(row, 0);
            const auto person = index.data(RecordListModel::RecordRole).value<ListedPerson>();
            names << person.name + u"/"_s + person.username + u"/"_s + person.status +
                         (person.asked ? u"!"_s : u""_s);
        }
        return names;
    }
};

} // namespace

class TestContactListView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everybodyOfTheServersListIsShown();
    void aFailureLeavesItsListAlone();
    void searching();
    void aLateAnswerIsNotShown();
    void aRequestStaysSent();
    void answeringARequest();
    void importing();
    void closingWhileEverythingRuns();
};

void TestContactListView::everybodyOfTheServersListIsShown() {
    const std::pair<const char *, QStringList> rows[] = {
        {R"({"contacts":[{"id":"9","username":"a"},{"id":"9","username":"b"},{}]})",
         {u"a/a/offline"_s, u"b/b/offline"_s, u"unknown//offline"_s}},
        {R"({"contacts":{}})", {}},
        {R"({"contacts":[1]})", {}},
        {"[]", {}},
    };
    for (const auto &[answer, expected] : rows) {
        const InRow row(answer);
        Screen screen;
        screen.http.answerFor(contactsPath, ScriptedAnswer::of(200, answer));
        screen.load();
        QCOMPARE(screen.people(), expected);
    }
}

void TestContactListView::aFailureLeavesItsListAlone() {
    for (const QByteArray &path : {contactsPath, requestsPath}) {
        const InRow row(path);
        Screen screen;
        screen.http.answerFor(contactsPath,
                              ScriptedAnswer::of(200, R"({"contacts":[{"id":"1","username":"a"}]})"));
        screen.http.answerFor(requestsPath,
                              ScriptedAnswer::of(200, R"({"requests":[{"id":"2","username":"b"}]})"));
        screen.load();
        QTRY_COMPARE(screen.view->incomingRequests.count(), 1);
        const QByteArray nobody = R"({"contacts":[],"requests":[]})";
        screen.http.answerFor(contactsPath, ScriptedAnswer::of(path == contactsPath ? 500 : 200, nobody));
        screen.http.answerFor(requestsPath, ScriptedAnswer::of(path == requestsPath ? 500 : 200, nobody));
        screen.view->loadData();
        QTRY_COMPARE(screen.view->contacts.count() + screen.view->incomingRequests.count(), 1);
        QCOMPARE(screen.view->contacts.count(), path == contactsPath ? 1 : 0);
    }
}

void TestContactListView::searching() {
    const QStringList known{u"ben/ben/offline"_s};
    const std::pair<ScriptedAnswer, QStringList> rows[] = {
        {ScriptedAnswer::of(200, R"({"users":[{"id":"1","display_name":"Анна"},{}]})"),
         QStringList{u"Анна//offline"_s, u"unknown//offline"_s} + known},
        {ScriptedAnswer::of(200, R"({"users":[]})"), known},
        {ScriptedAnswer::of(400, "{}"), known},
        {ScriptedAnswer::truncated(R"({"users":[)"), known},
    };
    for (const auto &[answer, expected] : rows) {
        const InRow row(answer.bytes.value());
        Screen screen;
        screen.http.answerFor(contactsPath,
                              ScriptedAnswer::of(200, R"({"contacts":[{"id":"2","username":"ben"}]})"));
        screen.load();
        screen.http.answerFor(searchPath,
                              ScriptedAnswer::of(200, R"({"users":[{"id":"3"},{"id":"4"},{"id":"5"}]})"));
        screen.view->searchQuery = u"an"_s;
        QVERIFY(screen.view->isSearching);
        QTRY_COMPARE(screen.people().size(), 4);
        screen.http.answerFor(searchPath, answer);
        screen.view->searchQuery = u"a&b я"_s;
        QTRY_VERIFY(!screen.view->isSearching);
        QCOMPARE(screen.people(), expected);
        QCOMPARE(screen.requestsTo(searchPath + "?q=a&b%20%D1%8F&user_id=7"), 1);
        // Too short a query asks nobody.
        const qsizetype asked = screen.http.requests().size();
        screen.view->searchQuery = u"a"_s;
        QCOMPARE(screen.people(), known);
        QVERIFY(!screen.view->isSearching);
        QCOMPARE(screen.http.requests().size(), asked);
    }
}

void TestContactListView::aLateAnswerIsNotShown() {
    Screen screen;
    screen.http.answerNext(ScriptedAnswer::of(200, R"({"users":[{"id":"1","username":"old"}]})").heldBack());
    screen.view->searchQuery = u"ol"_s;
    QTRY_COMPARE(screen.http.requests().size(), 1);
    screen.http.answerNext(ScriptedAnswer::of(200, R"({"users":[{"id":"2","username":"new"}]})"));
    screen.view->searchQuery = u"new"_s;
    QTRY_COMPARE(screen.people(), QStringList{u"new/new/offline"_s});
    screen.http.release();
    // What comes after it has been dealt with.
    screen.load();
    QCOMPARE(screen.people(), QStringList{u"new/new/offline"_s});
    QVERIFY(!screen.view->isSearching);
}

void TestContactListView::aRequestStaysSent() {
    const std::pair<ScriptedAnswer, bool> rows[] = {
        {ScriptedAnswer::of(200, R"({"status":"pending"})"), true},
        {ScriptedAnswer::of(200, R"({"status":"accepted"})"), false},
        {ScriptedAnswer::of(200, "{}"), false},
        {ScriptedAnswer::of(404, R"({"status":"pending"})"), false},
        {ScriptedAnswer::truncated(R"({"status":"pending"})"), false},
    };
    for (const auto &[answer, sent] : rows) {
        const InRow row(answer.bytes.value());
        Screen screen;
        screen.http.answerFor(searchPath,
                              ScriptedAnswer::of(200, R"({"users":[{"id":"12","username":"a"},{}]})"));
        screen.http.answerFor("/api/messenger/contacts/request", answer);
        screen.view->searchQuery = u"aa"_s;
        QTRY_COMPARE(screen.people().size(), 2);
        screen.view->sendRequest({});
        screen.view->sendRequest(u"12"_s);
        QTRY_COMPARE(screen.requestsTo("/api/messenger/contacts/request"), 1);
        QCOMPARE(screen.http.lastRequest().body, R"({"contact_id":12,"user_id":7})");
        screen.load();
        const QString expected = sent ? u"a/a/offline!"_s : u"a/a/offline"_s;
        QTRY_COMPARE(screen.people().first(), expected);
        // Found again, for as long as the screen lives.
        screen.view->searchQuery = u"aaa"_s;
        QTRY_VERIFY(!screen.view->isSearching);
        QCOMPARE(screen.people().first(), expected);
    }
}

void TestContactListView::answeringARequest() {
    const auto done = ScriptedAnswer::of(200, R"({"status":"accepted"})");
    const auto emptied = ScriptedAnswer::of(200, R"({"requests":[]})");
    const auto full = ScriptedAnswer::of(200, R"({"requests":[{"id":"12","username":"a"}]})");
    const struct {
        const char *name;
        bool accept;
        ScriptedAnswer answer, listAfterwards;
        int left;
    } rows[] = {
        {"accepted", true, done, emptied, 0},
        {"rejected", false, ScriptedAnswer::of(200, R"({"status":"rejected"})"), emptied, 0},
        {"no whole answer to it", true, ScriptedAnswer::truncated("{"), full, 1},
        {"refused", true, ScriptedAnswer::of(500, "{}"), full, 1},
        {"done, but no list afterwards", true, done, ScriptedAnswer::of(500, "{}"), 1},
    };
    for (const auto &row : rows) {
        const InRow named(row.name);
        Screen screen;
        screen.http.answerFor(requestsPath,
                              ScriptedAnswer::of(200, R"({"requests":[{"id":"12","username":"a"},{}]})"));
        screen.http.answerFor(requestsPath + "/12", row.answer);
        screen.load();
        QTRY_COMPARE(screen.view->incomingRequests.count(), 2);
        screen.http.answerFor(requestsPath, row.listAfterwards);
        screen.view->acceptRequest({});
        row.accept ? screen.view->acceptRequest(u"12"_s) : screen.view->rejectRequest(u"12"_s);
        // At the click, before anything has come back.
        QVERIFY(screen.view->incomingRequests.at(0).asked);
        QTRY_COMPARE(screen.requestsTo(requestsPath + "?user_id=7"), 2);
        if (row.left == 0)
            QTRY_COMPARE(screen.view->incomingRequests.count(), 0);
        else
            QTRY_VERIFY(!screen.view->incomingRequests.at(0).asked);
        QByteArrayList bodies;
        for (const RecordedRequest &request : screen.http.requests())
            if (request.target == requestsPath + "/12")
                bodies.append(request.body);
        QCOMPARE(bodies, QByteArrayList{row.accept ? R"({"action":"accept","user_id":7})"
                                                   : R"({"action":"reject","user_id":7})"});
    }
}

// What ends an import is the importer's own test.
void TestContactListView::importing() {
    for (const auto &[allowed, status] : {std::pair(true, 200), {true, 500}, {false, 200}}) {
        const InRow row(QByteArray::number(status) + (allowed ? "" : ", denied"));
        Screen screen;
        screen.book->allowed = allowed;
        screen.book->known = {personWithNumber(u"Anna"_s)};
        screen.http.answerFor("/api/messenger/contacts/add", ScriptedAnswer::of(status, "{}"));
        screen.view->importSystemContacts();
        QTRY_VERIFY(!screen.view->isImportingContacts);
        QCOMPARE(screen.view->importedCount.value(), allowed && status == 200 ? 1 : 0);
        QCOMPARE(screen.view->importError.value(), screen.importer.lastError.value());
        QCOMPARE(screen.view->importError.value().has_value(), !allowed);
        // The lists are loaded anew, whatever came of it.
        QTRY_COMPARE(screen.requestsTo(contactsPath + "?user_id=7"), 1);
    }
}

void TestContactListView::closingWhileEverythingRuns() {
    Screen screen;
    screen.book->known = {personWithNumber(u"Anna"_s)};
    screen.view->loadData();
    screen.view->searchQuery = u"anna"_s;
    screen.view->sendRequest(u"5"_s);
    screen.view->importSystemContacts();
    const std::weak_ptr<MessengerContactListView> closed = std::exchange(screen.view, nullptr);
    QTRY_VERIFY(closed.expired());
    QCOMPARE(screen.requestsTo("/api/messenger/contacts/add"), 1);
}

ORVANE_TEST_MAIN(TestContactListView)
#include "tst_contact_list_view.moc"

// SPDX-License-Identifier: MIT
#include "ChatList/People/MessengerContactListView.h"
#include "HomeServer/Client.h"
#include "Support/ClientParts.h"
#include "Support/KnownAddressBook.h"
#include "Support/SignedInSession.h"
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
    void peopleAreReadKeyByKey_data();
    void peopleAreReadKeyByKey();
    void aFailureLeavesItsListAlone_data();
    void aFailureLeavesItsListAlone();
    void tooShortAQueryAsksNobody();
    void searching_data();
    void searching();
    void aLateAnswerIsNotShown();
    void aRequestStaysSent_data();
    void aRequestStaysSent();
    void answeringARequest_data();
    void answeringARequest();
    void importing_data();
    void importing();
    void closingWhileEverythingRuns();
    void twoPeopleAtHome();
};

void TestContactListView::peopleAreReadKeyByKey_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QByteArray &answer, const QStringList &expected) {
        QTest::newRow(name) << answer << expected;
    };
    row("whole", R"({"contacts":[{"id":"9","display_name":"Ben","username":"ben","status":"online"}]})",
        {u"Ben/ben/online"_s});
    row("nothing known", R"({"contacts":[{}]})", {u"unknown//offline"_s});
    row("a username alone", R"({"contacts":[{"id":"9","username":"ben"}]})", {u"ben/ben/offline"_s});
    row("keys of other types", R"({"contacts":[{"id":9,"display_name":[],"username":"b","status":1}]})",
        {u"b/b/offline"_s});
    row("two of one id", R"({"contacts":[{"id":"9","username":"a"},{"id":"9","username":"b"}]})",
        {u"a/a/offline"_s, u"b/b/offline"_s});
    row("line breaks", "{\"contacts\":[{\"display_name\":\"a\\n\\r b\"}]}", {u"a b//offline"_s});
    row("no list", R"({"contacts":{}})", {});
    row("a list of numbers", R"({"contacts":[1]})", {});
    row("no object", "[]", {});
    const QByteArray longName = QByteArray("x").repeated(10'000);
    row("ten thousand letters", R"({"contacts":[{"display_name":")" + longName + "\"}]}",
        {QString(200, u'x') + u"//offline"_s});
}

void TestContactListView::peopleAreReadKeyByKey() {
    QFETCH(QByteArray, answer);
    QFETCH(QStringList, expected);
    Screen screen;
    screen.http.answerFor(contactsPath, ScriptedAnswer::of(200, answer));
    screen.load();
    QCOMPARE(screen.people(), expected);
}

void TestContactListView::aFailureLeavesItsListAlone_data() {
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("contacts") << contactsPath;
    QTest::newRow("requests") << requestsPath;
}

void TestContactListView::aFailureLeavesItsListAlone() {
    QFETCH(QByteArray, path);
    Screen screen;
    screen.http.answerFor(contactsPath,
                          ScriptedAnswer::of(200, R"({"contacts":[{"id":"1","username":"a"}]})"));
    screen.http.answerFor(requestsPath,
                          ScriptedAnswer::of(200, R"({"requests":[{"id":"2","username":"b"}]})"));
    screen.load();
    QTRY_COMPARE(screen.view->incomingRequests.count(), 1);
    screen.http.answerFor(contactsPath, ScriptedAnswer::of(200, R"({"contacts":[]})"));
    screen.http.answerFor(requestsPath, ScriptedAnswer::of(200, R"({"requests":[]})"));
    screen.http.answerFor(path, ScriptedAnswer::of(500, R"({"contacts":[],"requests":[]})"));
    screen.view->loadData();
    QTRY_COMPARE(screen.view->contacts.count() + screen.view->incomingRequests.count(), 1);
    QCOMPARE(screen.view->contacts.count(), path == contactsPath ? 1 : 0);
}

void TestContactListView::tooShortAQueryAsksNobody() {
    Screen screen;
    screen.http.answerFor(searchPath, ScriptedAnswer::of(200, R"({"users":[{"id":"1","username":"anna"}]})"));
    screen.view->searchQuery = u"an"_s;
    QVERIFY(screen.view->isSearching);
    QTRY_COMPARE(screen.people().size(), 1);
    QVERIFY(!screen.view->isSearching);
    screen.view->searchQuery = u"a"_s;
    QCOMPARE(screen.people().size(), 0);
    QVERIFY(!screen.view->isSearching);
    QCOMPARE(screen.http.requests().size(), 1);
}

void TestContactListView::searching_data() {
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QStringList>("expected");
    const QStringList known{u"ben/ben/offline"_s};
    QTest::newRow("found") << ScriptedAnswer::of(200, R"({"users":[{"id":"1","display_name":"Анна"},{}]})")
                           << QStringList{u"Анна//offline"_s, u"unknown//offline"_s} + known;
    QTest::newRow("nobody") << ScriptedAnswer::of(200, R"({"users":[]})") << known;
    QTest::newRow("another key") << ScriptedAnswer::of(200, R"({"people":[{"id":"1"}]})") << known;
    QTest::newRow("refused") << ScriptedAnswer::of(400, "{}") << known;
    QTest::newRow("cut off") << ScriptedAnswer::truncated(R"({"users":[)") << known;
}

void TestContactListView::searching() {
    QFETCH(ScriptedAnswer, answer);
    QFETCH(QStringList, expected);
    Screen screen;
    screen.http.answerFor(contactsPath,
                          ScriptedAnswer::of(200, R"({"contacts":[{"id":"2","username":"ben"}]})"));
    screen.load();
    screen.http.answerFor(searchPath,
                          ScriptedAnswer::of(200, R"({"users":[{"id":"3"},{"id":"4"},{"id":"5"}]})"));
    screen.view->searchQuery = u"first"_s;
    QTRY_COMPARE(screen.people().size(), 4);
    screen.http.answerFor(searchPath, answer);
    screen.view->searchQuery = u"a&b я"_s;
    QTRY_VERIFY(!screen.view->isSearching);
    QCOMPARE(screen.people(), expected);
    QCOMPARE(screen.requestsTo(searchPath + "?q=a&b%20%D1%8F&user_id=7"), 1);
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

void TestContactListView::aRequestStaysSent_data() {
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<bool>("sent");
    QTest::newRow("pending") << ScriptedAnswer::of(200, R"({"status":"pending"})") << true;
    QTest::newRow("a contact already") << ScriptedAnswer::of(200, R"({"status":"accepted"})") << false;
    QTest::newRow("no status") << ScriptedAnswer::of(200, "{}") << false;
    QTest::newRow("refused") << ScriptedAnswer::of(404, R"({"status":"pending"})") << false;
    QTest::newRow("cut off") << ScriptedAnswer::truncated(R"({"status":"pending"})") << false;
}

void TestContactListView::aRequestStaysSent() {
    QFETCH(ScriptedAnswer, answer);
    QFETCH(bool, sent);
    Screen screen;
    screen.http.answerFor(searchPath,
                          ScriptedAnswer::of(200, R"({"users":[{"id":"12","username":"a"},{}]})"));
    screen.http.answerFor("/api/messenger/contacts/request", answer);
    screen.view->searchQuery = u"aa"_s;
    QTRY_COMPARE(screen.people().size(), 2);
    screen.view->sendRequest({});
    screen.view->sendRequest(u"12"_s);
    QTRY_COMPARE(screen.requestsTo("/api/messenger/contacts/request"), 1);
    QCOMPARE(*json::parseObject(screen.http.lastRequest().body),
             (QJsonObject{{u"user_id"_s, 7}, {u"contact_id"_s, 12}}));
    screen.load();
    const QString expected = sent ? u"a/a/offline!"_s : u"a/a/offline"_s;
    QTRY_COMPARE(screen.people().first(), expected);
    // Found again, for as long as the screen lives.
    screen.view->searchQuery = u"aaa"_s;
    QTRY_VERIFY(!screen.view->isSearching);
    QCOMPARE(screen.people().first(), expected);
}

void TestContactListView::answeringARequest_data() {
    QTest::addColumn<bool>("accept");
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<ScriptedAnswer>("listAfterwards");
    QTest::addColumn<int>("left");
    const auto done = ScriptedAnswer::of(200, R"({"status":"accepted"})");
    const auto emptied = ScriptedAnswer::of(200, R"({"requests":[]})");
    const auto full = ScriptedAnswer::of(200, R"({"requests":[{"id":"12","username":"a"}]})");
    QTest::newRow("accepted") << true << done << emptied << 0;
    QTest::newRow("rejected") << false << ScriptedAnswer::of(200, R"({"status":"rejected"})") << emptied << 0;
    QTest::newRow("no whole answer to it") << true << ScriptedAnswer::truncated("{") << full << 1;
    QTest::newRow("refused") << true << ScriptedAnswer::of(500, "{}") << full << 1;
    QTest::newRow("done, but no list afterwards") << true << done << ScriptedAnswer::of(500, "{}") << 1;
}

void TestContactListView::answeringARequest() {
    QFETCH(bool, accept);
    QFETCH(ScriptedAnswer, answer);
    QFETCH(ScriptedAnswer, listAfterwards);
    QFETCH(int, left);
    Screen screen;
    screen.http.answerFor(requestsPath,
                          ScriptedAnswer::of(200, R"({"requests":[{"id":"12","username":"a"},{}]})"));
    screen.http.answerFor("/api/messenger/contacts/requests/12", answer);
    screen.load();
    QTRY_COMPARE(screen.view->incomingRequests.count(), 2);
    screen.http.answerFor(requestsPath, listAfterwards);
    screen.view->acceptRequest({});
    accept ? screen.view->acceptRequest(u"12"_s) : screen.view->rejectRequest(u"12"_s);
    // At the click, before anything has come back.
    QVERIFY(screen.view->incomingRequests.at(0).asked);
    QTRY_COMPARE(screen.requestsTo(requestsPath + "?user_id=7"), 2);
    if (left == 0)
        QTRY_COMPARE(screen.view->incomingRequests.count(), 0);
    else
        QTRY_VERIFY(!screen.view->incomingRequests.at(0).asked);
    QCOMPARE(screen.requestsTo(requestsPath + "/12"), 1);
    for (const RecordedRequest &request : screen.http.requests())
        if (request.target == requestsPath + "/12")
            QCOMPARE(*json::parseObject(request.body),
                     (QJsonObject{{u"user_id"_s, 7}, {u"action"_s, accept ? u"accept"_s : u"reject"_s}}));
}

void TestContactListView::importing_data() {
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<int>("cards");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("count");
    QTest::newRow("done") << true << 1 << 200 << QString() << 1;
    QTest::newRow("denied")
        << false << 1 << 200
        << u"Доступ к контактам запрещён. Разрешите в Настройках → Конфиденциальность → Контакты."_s << 0;
    QTest::newRow("empty") << true << 0 << 200 << u"В адресной книге нет контактов для импорта."_s << 0;
    QTest::newRow("the server refuses") << true << 1 << 500 << QString() << 0;
}

void TestContactListView::importing() {
    QFETCH(bool, allowed);
    QFETCH(int, cards);
    QFETCH(int, status);
    QFETCH(QString, words);
    QFETCH(int, count);
    Screen screen;
    screen.book->allowed = allowed;
    if (cards > 0)
        screen.book->known = {personWithNumber(u"Anna"_s)};
    screen.http.answerFor("/api/messenger/contacts/add", ScriptedAnswer::of(status, "{}"));
    screen.view->importSystemContacts();
    QTRY_VERIFY(!screen.view->isImportingContacts);
    QCOMPARE(screen.view->importedCount.value(), count);
    QCOMPARE(screen.view->importError.value().value_or(QString()), words);
    // The lists are loaded anew, whatever came of it.
    QTRY_COMPARE(screen.requestsTo(contactsPath + "?user_id=7"), 1);
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

namespace {

struct Guest {
    Guest(homeserver::test::Site &site, const QString &name)
        : person(site, name)
        , api(site.server().httpUrl().toString(), signedIn.session)
        , importer(std::unique_ptr<AddressBook>(book), api)
        , view(std::make_shared<MessengerContactListView>(signedIn.session, api, importer)) {
        signedIn.session.token = person.token;
        signedIn.session.currentUserId = person.id;
    }

    homeserver::test::Person person;
    SignedInSession signedIn;
    MessengerAPI api;
    KnownAddressBook *book = new KnownAddressBook;
    ContactImporter importer;
    std::shared_ptr<MessengerContactListView> view;
};

} // namespace

void TestContactListView::twoPeopleAtHome() {
    homeserver::test::Site site;
    Guest anna(site, u"anna"_s);
    Guest boris(site, u"boris"_s);
    const QString annasId = QString::number(anna.person.id);
    const QString borisId = QString::number(boris.person.id);

    for (const bool accept : {false, true}) {
        anna.view->searchQuery = QString();
        anna.view->searchQuery = u"bor"_s;
        QTRY_COMPARE(anna.view->searchResults.count(), 1);
        QCOMPARE(anna.view->searchResults.at(0).username, u"boris"_s);
        anna.view->sendRequest(borisId);
        QTRY_VERIFY(anna.view->searchResults.at(0).asked);
        // The second time she is not told when her request has arrived: it counts as sent since the first.
        const auto hasArrived = [&] {
            boris.view->loadData();
            return boris.view->incomingRequests.count() == 1;
        };
        QTRY_VERIFY(hasArrived());
        QCOMPARE(boris.view->incomingRequests.at(0).userID, annasId);
        accept ? boris.view->acceptRequest(annasId) : boris.view->rejectRequest(annasId);
        QTRY_COMPARE(boris.view->incomingRequests.count(), 0);
    }
    boris.view->loadData();
    QTRY_VERIFY(boris.view->contacts.rowOf(annasId) >= 0);
    anna.view->loadData();
    QTRY_VERIFY(anna.view->contacts.rowOf(borisId) >= 0);

    anna.book->known = {personWithNumber(u"Carl"_s), personWithNumber(u"Dora"_s)};
    anna.view->importSystemContacts();
    QTRY_COMPARE(anna.view->importedCount.value(), 1);
    // Once more: the server takes it as the same one.
    anna.view->importSystemContacts();
    QTRY_VERIFY(!anna.view->isImportingContacts);
    QCOMPARE(anna.view->importedCount.value(), 1);
}

ORVANE_TEST_MAIN(TestContactListView)
#include "tst_contact_list_view.moc"

// SPDX-License-Identifier: MIT
#include "ChatList/People/MessengerContactListView.h"

#include "Base/Task.h"

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int shortestQuery = 2;
constexpr auto stays = "what was there stays";

void setAsked(RecordList<ListedPerson> &people, const QString &userID, bool asked) {
    for (int row = 0; row < people.count(); ++row) {
        ListedPerson person = people.at(row);
        if (person.userID != userID)
            continue;
        person.asked = asked;
        people.replace(row, person);
    }
}

} // namespace

MessengerContactListView::MessengerContactListView(MessengerSession &session, MessengerAPI &api,
                                                   ContactImporter &importer)
    : m_session(session)
    , m_api(api)
    , m_importer(importer)
    , m_query(searchQuery.addNotifier([this] { lookForPeople(); })) {
    m_people.addSourceModel(&searchResults);
    m_people.addSourceModel(&contacts);
}

void MessengerContactListView::loadData() {
    isLoading = contacts.isEmpty();
    launch(loadContacts(shared_from_this()));
    launch(loadRequests(shared_from_this()));
}

void MessengerContactListView::lookForPeople() {
    if (searchQuery.value().size() < shortestQuery) {
        searchResults.assign({});
        isSearching = false;
        return;
    }
    performSearch();
}

void MessengerContactListView::performSearch() {
    isSearching = true;
    launch(search(shared_from_this(), searchQuery));
}

void MessengerContactListView::sendRequest(const QString &userID) {
    if (!userID.isEmpty())
        launch(request(shared_from_this(), userID));
}

void MessengerContactListView::acceptRequest(const QString &userID) {
    answerRequest(userID, u"accept"_s);
}

void MessengerContactListView::rejectRequest(const QString &userID) {
    answerRequest(userID, u"reject"_s);
}

void MessengerContactListView::answerRequest(const QString &userID, const QString &action) {
    if (userID.isEmpty())
        return;
    setAsked(incomingRequests, userID, true);
    launch(answer(shared_from_this(), userID, action));
}

void MessengerContactListView::importSystemContacts() {
    launch(import(shared_from_this()));
}

QCoro::Task<void> MessengerContactListView::loadContacts(Self self) {
    const std::optional<QList<QJsonObject>> records =
        co_await dropped(self->m_api.fetchContacts(self->user()), stays);
    if (records)
        self->contacts.assign(listedPeople(*records));
    self->isLoading = false;
}

QCoro::Task<void> MessengerContactListView::loadRequests(Self self) {
    const std::optional<QList<QJsonObject>> records =
        co_await dropped(self->m_api.getContactRequests(self->user()), stays);
    if (records)
        self->incomingRequests.assign(listedPeople(*records));
}

QCoro::Task<void> MessengerContactListView::search(Self self, QString query) {
    const std::optional<QList<QJsonObject>> records =
        co_await dropped(self->m_api.searchUsers(query, self->user()), "nobody was found");
    if (self->searchQuery.value() != query)
        co_return;
    QList<ListedPerson> found = listedPeople(records.value_or(QList<QJsonObject>()));
    for (ListedPerson &person : found)
        person.asked = self->m_requested.contains(person.userID);
    self->searchResults.assign(found);
    self->isSearching = false;
}

QCoro::Task<void> MessengerContactListView::request(Self self, QString userID) {
    const std::optional<QString> status =
        co_await dropped(self->m_api.sendContactRequest(self->user(), userID), "the button is still there");
    if (status == "pending"_L1) {
        self->m_requested.insert(userID);
        setAsked(self->searchResults, userID, true);
    }
}

QCoro::Task<void> MessengerContactListView::answer(Self self, QString userID, QString action) {
    co_await dropped(self->m_api.handleContactRequest(self->user(), userID, action),
                     "the lists below tell what holds");
    launch(loadContacts(self));
    co_await loadRequests(self);
    // For a list that could not be loaded.
    setAsked(self->incomingRequests, userID, false);
}

QCoro::Task<void> MessengerContactListView::import(Self self) {
    self->isImportingContacts = true;
    self->importedCount = 0;
    self->importError = std::nullopt;
    const bool imported =
        co_await dropped(self->m_importer.importAndSync(), "what has words is in the importer's last error");
    if (imported)
        self->importedCount = self->m_importer.importedCount.value();
    self->importError = self->m_importer.lastError.value();
    self->isImportingContacts = false;
    self->loadData();
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "ChatList/MessengerContactListView.h"

#include "Base/Task.h"

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int shortestQuery = 2;

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
    try {
        const QList<QJsonObject> records = co_await self->m_api.fetchContacts(self->user());
        self->contacts.assign(listedPeople(records));
    } catch (const std::exception &) {
        // Dropped on purpose: what was there stays.
    }
    self->isLoading = false;
}

QCoro::Task<void> MessengerContactListView::loadRequests(Self self) {
    try {
        const QList<QJsonObject> records = co_await self->m_api.getContactRequests(self->user());
        self->incomingRequests.assign(listedPeople(records));
    } catch (const std::exception &) {
        // Dropped on purpose: what was there stays.
    }
}

QCoro::Task<void> MessengerContactListView::search(Self self, QString query) {
    QList<ListedPerson> found;
    try {
        const QList<QJsonObject> records = co_await self->m_api.searchUsers(query, self->user());
        found = listedPeople(records);
    } catch (const std::exception &) {
        // Dropped on purpose: nobody was found.
    }
    if (self->searchQuery.value() != query)
        co_return;
    for (ListedPerson &person : found)
        person.asked = self->m_requested.contains(person.userID);
    self->searchResults.assign(found);
    self->isSearching = false;
}

QCoro::Task<void> MessengerContactListView::request(Self self, QString userID) {
    try {
        const QString status = co_await self->m_api.sendContactRequest(self->user(), userID);
        if (status == "pending"_L1) {
            self->m_requested.insert(userID);
            setAsked(self->searchResults, userID, true);
        }
    } catch (const std::exception &) {
        // Dropped on purpose: the button is still there.
    }
}

QCoro::Task<void> MessengerContactListView::answer(Self self, QString userID, QString action) {
    try {
        co_await self->m_api.handleContactRequest(self->user(), userID, action);
    } catch (const std::exception &) {
        // Dropped on purpose: the lists below tell what holds.
    }
    launch(loadContacts(self));
    co_await loadRequests(self);
    // For a list that could not be loaded.
    setAsked(self->incomingRequests, userID, false);
}

QCoro::Task<void> MessengerContactListView::import(Self self) {
    self->isImportingContacts = true;
    self->importedCount = 0;
    self->importError = std::nullopt;
    try {
        co_await self->m_importer.importAndSync();
        self->importedCount = self->m_importer.importedCount.value();
    } catch (const std::exception &) {
        // Dropped on purpose: what has words is in the importer's last error.
    }
    self->importError = self->m_importer.lastError.value();
    self->isImportingContacts = false;
    self->loadData();
}

} // namespace orvane

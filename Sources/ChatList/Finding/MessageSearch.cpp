// SPDX-License-Identifier: MIT
#include "ChatList/Finding/MessageSearch.h"

#include "Base/Task.h"

namespace orvane {

namespace {

constexpr int shortestQuery = 2;

} // namespace

MessageSearch::MessageSearch(MessengerSession &session, MessengerAPI &api, const Contacts &contacts)
    : m_session(session)
    , m_api(api)
    , m_contacts(contacts) {}

void MessageSearch::searchMessages(const QString &query) {
    if (query.size() < shortestQuery) {
        searchResults.assign({});
        isSearchingMessages = false;
        return;
    }
    isSearchingMessages = true;
    searchesRunning = searchesRunning + 1;
    launch(search(shared_from_this(), query));
}

QCoro::Task<void> MessageSearch::search(std::shared_ptr<MessageSearch> self, QString query) {
    const std::optional<QList<QJsonObject>> found = co_await dropped(
        self->m_api.globalSearch(query, self->m_session.userIdText()), "what was found before stays");
    if (found) {
        QList<SearchHit> hits;
        for (const QJsonObject &record : *found)
            if (const auto hit = SearchHit::from(record, self->m_contacts))
                hits.append(*hit);
        self->searchResults.assign(hits);
    }
    self->isSearchingMessages = false;
    self->searchesRunning = self->searchesRunning - 1;
}

} // namespace orvane

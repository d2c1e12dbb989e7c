// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "ChatList/People/ContactImporter.h"
#include "ChatList/People/ListedPerson.h"
#include "Server/MessengerAPI.h"

#include <QConcatenateTablesProxyModel>
#include <QCoroTask>
#include <QSet>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

using namespace Qt::StringLiterals;

/// Lists of records one after the other, told to views like a single one.
class JoinedLists : public QConcatenateTablesProxyModel {
    Q_OBJECT

public:
    using QConcatenateTablesProxyModel::QConcatenateTablesProxyModel;

    QHash<int, QByteArray> roleNames() const override { return {{RecordListModel::RecordRole, "record"_ba}}; }
};

/// The sheet for finding people, answering contact requests and bringing in the address book. Main thread.
class MessengerContactListView : public QObject,
                                 public std::enable_shared_from_this<MessengerContactListView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The chat list opens it.")
    Q_PROPERTY(orvane::RecordListModel *searchResults READ searchResultModel CONSTANT)
    Q_PROPERTY(orvane::RecordListModel *contacts READ contactModel CONSTANT)
    Q_PROPERTY(orvane::RecordListModel *incomingRequests READ requestModel CONSTANT)
    /// The search results, then the contacts.
    Q_PROPERTY(QAbstractItemModel *people READ people CONSTANT)
    OBSERVABLE(QString, searchQuery)
    OBSERVABLE(bool, isSearching)
    /// 0 contacts, 1 requests.
    OBSERVABLE(int, selectedTab)
    OBSERVABLE(bool, isImportingContacts)
    /// Of the last import of this screen; 0 where it came to nothing.
    OBSERVABLE(int, importedCount)
    /// What the importer said of it; absent where it said nothing.
    OBSERVABLE_OPTIONAL(QString, importError)
    /// Until the first answer about the contacts.
    OBSERVABLE(bool, isLoading)

public:
    MessengerContactListView(MessengerSession &session, MessengerAPI &api, ContactImporter &importer);

    RecordList<ListedPerson> searchResults;
    RecordList<ListedPerson> contacts;
    RecordList<ListedPerson> incomingRequests;

    RecordListModel *searchResultModel() { return &searchResults; }
    RecordListModel *contactModel() { return &contacts; }
    RecordListModel *requestModel() { return &incomingRequests; }
    QAbstractItemModel *people() { return &m_people; }

    /// Contacts and requests, side by side. What fails leaves its list as it was.
    Q_INVOKABLE void loadData();
    /// For what stands in `searchQuery`, which calls it. An answer that comes after the query has changed is
    /// not shown.
    Q_INVOKABLE void performSearch();
    Q_INVOKABLE void sendRequest(const QString &userID);
    /// The outcome is in the lists when they have been loaded anew, which follows.
    Q_INVOKABLE void acceptRequest(const QString &userID);
    Q_INVOKABLE void rejectRequest(const QString &userID);
    Q_INVOKABLE void importSystemContacts();

private:
    using Self = std::shared_ptr<MessengerContactListView>;
    static QCoro::Task<void> loadContacts(Self self);
    static QCoro::Task<void> loadRequests(Self self);
    static QCoro::Task<void> search(Self self, QString query);
    static QCoro::Task<void> request(Self self, QString userID);
    static QCoro::Task<void> answer(Self self, QString userID, QString action);
    static QCoro::Task<void> import(Self self);

    void lookForPeople();
    void answerRequest(const QString &userID, const QString &action);
    QString user() const { return m_session.userIdText(); }

    MessengerSession &m_session;
    MessengerAPI &m_api;
    ContactImporter &m_importer;
    JoinedLists m_people;
    /// Those whose request is pending, for as long as this screen lives.
    QSet<QString> m_requested;
    QPropertyNotifier m_query;
};

} // namespace orvane

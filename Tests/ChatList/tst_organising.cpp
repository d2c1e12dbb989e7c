// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
#include "Support/Await.h"
#include "Support/InRow.h"
#include "Support/OpenChatParts.h"
#include "Support/TestMain.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// The parts of the main screen that make new things and arrange them, each by itself.
struct Desk : OpenChatParts {
    std::shared_ptr<MessengerChatListView> list;

    Desk() {
        signIn();
        list = std::make_shared<MessengerChatListView>(MessengerChatListView::Parts{chatParts(), session});
    }

    QByteArray bodyTo(const QByteArray &path) const {
        for (const RecordedRequest &request : http.requests()) {
            if (request.method == "POST" && request.target == path)
                return request.body;
        }
        return {};
    }
    /// The next request is answered after those before it have been looked at.
    void settle() { outcomeOf(api.get(u"/later"_s)); }
};

} // namespace

class TestOrganising : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aGroupIsOfTheKindThatItsFormSays();
    void whatTheServerDidNotMakeDoesNotAppear();
    void channelsAndFoldersHaveNames();
    void aFolderIsTheServersToo();
    void theSavedChatAlwaysOpens();
    void aSearchAsksFromTwoCharactersOn();
    void starredMessagesAreThoseOfTheServer();
};

void TestOrganising::aGroupIsOfTheKindThatItsFormSays() {
    const struct {
        const char *name, *remote, *path, *body;
    } rows[] = {
        {" Team", "", "/api/messenger/chats",
         R"({"participants":[9],"title":" Team","type":"group","user_id":7})"},
        {"", "ben:home, @x, ,\n@y", "/api/messenger/chats",
         R"({"participants":[9],"title":"Group","type":"group","user_id":7})"},
        {"Team", "a, \t@b:c ,@d:e", "/api/messenger/chats/federated",
         R"({"local_participants":[9],"remote_participants":["@b:c","@d:e"],"title":"Team"})"},
        {"", "@b:c", "/api/messenger/chats/federated",
         R"({"local_participants":[9],"remote_participants":["@b:c"],"title":"🌐 Federated Group"})"},
    };
    for (const auto &row : rows) {
        const InRow named(row.body);
        Desk desk;
        NewGroup &form = *desk.list->newGroup();
        form.showNewGroup = true;
        form.groupName = row.name;
        form.groupRemoteMX = row.remote;
        for (const char *participant : {"5", "9", "5"})
            form.toggleParticipant(participant);
        desk.http.answerNext(ScriptedAnswer::of(200, R"({"chat":{"id":"g"}})"));
        form.createGroup();
        QVERIFY(!form.showNewGroup && form.groupName.value().isEmpty() &&
                form.groupRemoteMX.value().isEmpty() && form.groupParticipants.value().isEmpty());
        QTRY_COMPARE(desk.list->selectedChatID.value(), u"g"_s);
        QCOMPARE(desk.bodyTo(row.path), row.body);
        const MessengerChat chat = *desk.list->chats.find(u"g"_s);
        QCOMPARE(chat.participants, QStringList{"9"});
        QVERIFY(chat.type == ChatType::group && !chat.aiEnabled);
    }
}

void TestOrganising::whatTheServerDidNotMakeDoesNotAppear() {
    for (const auto &[status, answer] : {std::pair(200, R"({"chat":{"title":"T"}})"),
                                         {200, "[]"},
                                         {500, R"({"id":"g","chat":{"id":"g"},"folder":{"id":"g"}})"}}) {
        const InRow named(QByteArray::number(status) + answer);
        Desk desk;
        for (int times = 0; times < 3; ++times)
            desk.http.answerNext(ScriptedAnswer::of(status, answer));
        desk.list->newGroup()->createGroup();
        desk.list->channels()->channelName = u"News"_s;
        desk.list->channels()->createChannel();
        desk.list->folders()->newFolderName = u"Work"_s;
        desk.list->folders()->createFolder();
        QTRY_COMPARE(desk.http.requests().size(), 3);
        desk.settle();
        QVERIFY(desk.list->selectedChatID.value().isEmpty());
        QCOMPARE(desk.list->chats.rowCount(), 0);
        QCOMPARE(desk.list->channels()->channels.count(), 0);
        QCOMPARE(desk.list->folders()->chatFolders.count(), 0);
        QVERIFY(desk.list->folders()->activeFolderId.value().isEmpty());
    }
}

void TestOrganising::channelsAndFoldersHaveNames() {
    Desk desk;
    Channels &channels = *desk.list->channels();
    Folders &folders = *desk.list->folders();
    channels.showNewChannel = true;
    channels.channelName = u" \n"_s;
    folders.showNewFolderAlert = true;
    folders.newFolderName = u" \n"_s;
    channels.createChannel();
    folders.createFolder();
    QVERIFY(channels.showNewChannel && folders.showNewFolderAlert);
    QCOMPARE(desk.http.requests().size(), 0);
    desk.http.answerFor("/api/messenger/channels", ScriptedAnswer::of(200, R"({"channel":{"id":"n"}})"));
    desk.http.answerFor("/api/messenger/folders",
                        ScriptedAnswer::of(201, R"({"folder":{"id":"f","name":"Work"}})"));
    // A second one of the same id is the first.
    for (int time = 0; time < 2; ++time) {
        channels.channelName = u" News "_s;
        channels.createChannel();
        folders.newFolderName = u" Work\n"_s;
        folders.createFolder();
        QVERIFY(!channels.showNewChannel && channels.channelName.value().isEmpty());
        QVERIFY(!folders.showNewFolderAlert && folders.newFolderName.value().isEmpty());
        QTRY_COMPARE(desk.http.requests().size(), 2 * (time + 1));
        QTRY_COMPARE(channels.channels.count(), 1);
        QTRY_COMPARE(folders.chatFolders.count(), 1);
    }
    QCOMPARE(channels.channels.at(0).type, ChatType::channel);
    QCOMPARE(desk.bodyTo("/api/messenger/channels"), R"({"title":"News","user_id":7})");
    QCOMPARE(desk.bodyTo("/api/messenger/folders"), R"({"icon":"📁","name":"Work"})");
    QCOMPARE(folders.activeFolderId.value(), u"f"_s);
    // Open, it shows that it has no chats.
    QVERIFY(folders.active());
}

void TestOrganising::aFolderIsTheServersToo() {
    Desk desk;
    Channels &channels = *desk.list->channels();
    Folders &folders = *desk.list->folders();
    const auto load = [&](const ScriptedAnswer &answer) {
        const qsizetype before = desk.http.requests().size();
        desk.http.answerNext(answer);
        desk.http.answerNext(answer);
        channels.loadChannels();
        folders.loadFolders();
        QTRY_COMPARE(desk.http.requests().size(), before + 2);
    };
    load(ScriptedAnswer::of(200, R"({"channels":[{"id":"a","title":"A"},{"id":5}],)"
                                 R"("folders":[{"id":"f","name":"F","chat_ids":["a"]}]})"));
    QTRY_COMPARE(channels.channels.count(), 1);
    QTRY_COMPARE(folders.chatFolders.count(), 1);
    folders.addChat(u"f"_s, u"b"_s);
    QTRY_COMPARE(desk.bodyTo("/api/messenger/folders/f/chats"), R"({"action":"add","chat_id":"b"})");
    QCOMPARE(folders.chatFolders.at(0).chatIds, QList<QString>{"a"});
    // What can't be had changes nothing.
    load(ScriptedAnswer::of(500));
    load(ScriptedAnswer::of(401, "{}"));
    desk.settle();
    QCOMPARE(channels.channels.count(), 1);
    QCOMPARE(folders.chatFolders.count(), 1);
}

void TestOrganising::theSavedChatAlwaysOpens() {
    const struct {
        int status;
        const char *answer, *id;
        int requests;
    } rows[] = {
        {200, R"({"chat":{"id":"s"}})", "s", 1},
        // It is asked again, and until then there is one of its own.
        {500, "", "saved_7", 2},
    };
    for (const auto &row : rows) {
        const InRow named(row.id);
        Desk desk;
        desk.http.answerFor("/api/messenger/saved", ScriptedAnswer::of(row.status, row.answer));
        for (int time = 0; time < 2; ++time) {
            desk.list->selectedChatID = QString();
            desk.list->openSavedChat();
            QTRY_COMPARE(desk.list->selectedChatID.value(), row.id);
        }
        QCOMPARE(desk.requestsTo("/api/messenger/saved?user_id=7"), row.requests);
        QCOMPARE(desk.list->chats.rowCount(), 1);
        QCOMPARE(desk.list->openChat()->title(), u"Saved Messages"_s);
        QCOMPARE(desk.list->openChat()->chat.participants, QStringList{"7"});
    }
}

void TestOrganising::aSearchAsksFromTwoCharactersOn() {
    Desk desk;
    MessageSearch &search = *desk.list->search();
    const QByteArray found = R"({"messages":[{"chat_id":"c","sender_id":"9","content":"x"},{"content":7}]})";
    desk.http.answerFor("/api/messenger/search/global", ScriptedAnswer::of(200, found));
    desk.list->searchText = u"a"_s;
    QVERIFY(!search.isSearchingMessages && desk.http.requests().isEmpty());
    desk.list->searchText = u"ab"_s;
    QVERIFY(search.isSearchingMessages);
    QTRY_COMPARE(search.searchResults.count(), 1);
    QVERIFY(!search.isSearchingMessages);
    // A failure leaves what was found, no list is an empty one.
    for (const auto &[status, left] : {std::pair(500, 1), {200, 0}}) {
        desk.http.answerNext(ScriptedAnswer::of(status, R"({"messages":{"0":1}})"));
        desk.list->searchText = u"abc%1"_s.arg(status);
        QTRY_VERIFY(!search.isSearchingMessages);
        QCOMPARE(search.searchResults.count(), left);
    }
    desk.list->searchText = u"ab"_s;
    QTRY_COMPARE(search.searchResults.count(), 1);
    desk.list->searchText = u"a"_s;
    QCOMPARE(search.searchResults.count(), 0);
}

void TestOrganising::starredMessagesAreThoseOfTheServer() {
    Desk desk;
    StarredMessagesView &starred = *desk.list->starredMessages();
    const QByteArray one =
        R"({"messages":[{"id":"m","chat_id":"c","sender_id":"9","content":"x"},{"id":1}]})";
    for (const auto &[answer, count] : {std::pair(one, 1), {QByteArray("<html>"), 0}}) {
        desk.http.answerFor("/api/messenger/starred", ScriptedAnswer::of(200, answer));
        starred.loadStarred();
        QVERIFY(starred.isLoading);
        QTRY_VERIFY(!starred.isLoading);
        QCOMPARE(starred.messages.count(), count);
    }
    QCOMPARE(starred.senderName(u"9"_s), u"9"_s);
}

ORVANE_TEST_MAIN(TestOrganising)
#include "tst_organising.moc"

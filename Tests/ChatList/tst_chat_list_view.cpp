// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
#include "Support/Await.h"
#include "Support/InRow.h"
#include "Support/OpenChatParts.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

/// Answers by path, since the start-up tasks run side by side.
struct Answers {
    QByteArray sync = R"({"cursor":41})";
    QByteArray federation = R"({"matrix_id":"@anna:home"})";
    QByteArray contacts =
        R"({"contacts":[{"id":"9","display_name":"Ben","username":"ben","status":"online"}]})";
    QByteArray chats = R"({"chats":[
        {"id":"old","participants":[{"user_id":7},{"user_id":9}],"last_message":"a","last_msg_at":100},
        {"id":"new","type":"group","title":"Team","participants":[],"last_message":"b","last_msg_at":200,"unread_count":3},
        {"id":"mid","type":"group","title":"Mid","participants":[],"last_message":"c","last_msg_at":150}]})";
};

struct Screen : OpenChatParts {
    std::shared_ptr<MessengerChatListView> list;

    explicit Screen(const Answers &answers = {}) {
        signIn();
        http.answerFor("/api/messenger/sync", ScriptedAnswer::of(200, answers.sync));
        http.answerFor("/api/messenger/federation/info", ScriptedAnswer::of(200, answers.federation));
        http.answerFor("/api/messenger/contacts", ScriptedAnswer::of(200, answers.contacts));
        http.answerFor("/api/messenger/chats", ScriptedAnswer::of(200, answers.chats));
        list = std::make_shared<MessengerChatListView>(MessengerChatListView::Parts{chatParts(), session});
        new QAbstractItemModelTester(&list->chats, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     list.get());
    }

    void load() {
        list->loadData();
        QTRY_VERIFY(!list->isLoading);
    }

    QStringList ids() const {
        QStringList result;
        for (int row = 0; row < list->chats.rowCount(); ++row)
            result.append(list->chats.at(row).id);
        return result;
    }

    QVariant shown(const char *id, ChatRows::Role role) const {
        return list->chats.index(list->chats.rowOf(QLatin1StringView(id))).data(role);
    }

    MessengerChat chat(const char *id) const { return *list->chats.find(QLatin1StringView(id)); }

    void message(const char *chatID, const char *text = "hello") {
        arrive(
            uR"({"type":"messenger_message","chat_id":"%1","message":{"id":"m","sender_id":"9","content":"%2"}})"_s
                .arg(QLatin1StringView(chatID), QLatin1StringView(text))
                .toUtf8());
    }
};

} // namespace

class TestChatListView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void startingUpDoesEachThingOnce();
    void cursorAndIdentityAreTakenOnlyInTheirType();
    void contactsStandBesideTheTwoThatAreAlwaysThere();
    void theAssistantOpensWhereItIs();
    void withoutChatsTheSamplesStandIn();
    void aMessageMovesItsChatUpAndCounts();
    void badEventsChangeNothing();
    void presenceFollowsTheEvents();
    void selectingOpensOneChatScreenAtATime();
    void rowsReadNamePreviewAndCount();
    void loadingAgainKeepsOneSubscription();
};

void TestChatListView::startingUpDoesEachThingOnce() {
    Screen screen;
    screen.load();
    QTRY_COMPARE(screen.session.matrixId.value(), u"@anna:home"_s);
    QCOMPARE(screen.session.syncCursor.value(), 41);
    QCOMPARE(screen.ids(), (QStringList{"new", "mid", "old"}));
    QCOMPARE(screen.requestsTo("/api/messenger/devices/register"), 1);
    QCOMPARE(screen.requestsTo("/api/messenger/sync?since=0"), 1);
    QCOMPARE(screen.requestsTo("/api/messenger/contacts?user_id=7"), 1);
    QCOMPARE(screen.requestsTo("/api/messenger/chats"), 1);
    QTRY_COMPARE(screen.events.frames(0).value(0), uR"({"token":"tok","type":"auth"})"_s);
    const UserDefaults defaults(screen.folder.filePath(u"defaults.ini"_s));
    QCOMPARE(defaults.integer(u"ot_sync_cursor"_s), 41);
}

void TestChatListView::cursorAndIdentityAreTakenOnlyInTheirType() {
    const struct {
        const char *sync, *federation;
        qint64 cursor;
        bool asks;
    } rows[] = {
        {R"({"cursor":"9"})", R"({"matrix_id":5})", 5, true},
        {R"({"cursor":-2})", "[]", -2, true},
        {R"({"cursor":1})", "<", 1, true},
        // No JSON ends the task.
        {"<", "{}", 5, false},
    };
    for (const auto &row : rows) {
        const InRow named(row.sync);
        Answers answers;
        answers.sync = row.sync;
        answers.federation = row.federation;
        Screen screen(answers);
        screen.session.adoptSyncCursor(5);
        screen.load();
        QTRY_COMPARE(screen.requestsTo("/api/messenger/federation/info"), row.asks ? 1 : 0);
        QCOMPARE(screen.session.syncCursor.value(), row.cursor);
        QVERIFY(!screen.session.matrixId.value());
    }
}

void TestChatListView::contactsStandBesideTheTwoThatAreAlwaysThere() {
    Answers answers;
    answers.contacts = R"({"contacts":[{"id":5,"display_name":"number id"},{"id":"1","username":"zoe"}]})";
    Screen screen(answers);
    screen.load();
    const Contacts &contacts = screen.list->contacts;
    QCOMPARE(contacts.size(), 3);
    QCOMPARE(contacts.value(u"7"_s).displayName, u"Alex"_s);
    QVERIFY(contacts.value(u"ai_orvanetalk"_s).isAI);
    QStringList names;
    for (const MessengerUser &user : screen.list->people())
        names.append(user.displayName);
    QCOMPARE(names, (QStringList{"Alex", "Orvane AI", "zoe"}));
}

void TestChatListView::theAssistantOpensWhereItIs() {
    const QByteArray announced = R"({"features":["assistant-contact","of a later time"]})";
    const QByteArray direct =
        R"({"chats":[{"id":"g","type":"group","participants":[{"user_id":7},{"user_id":3}]},
        {"id":"d","participants":[{"user_id":7},{"user_id":3}]},{"id":"b","participants":[{"user_id":9}]}]})";
    const QByteArray none = R"({"chats":[{"id":"g","type":"group","participants":[{"user_id":3}]}]})";
    const struct {
        const char *name;
        QByteArray federation, chats;
        const char *opened;
    } rows[] = {
        {"announced", announced, direct, "d"},
        {"announced, no chat with it yet", announced, none, "made"},
        {"nothing announced", "{}", direct, ""},
        {"another list", R"({"features":["assistant-contact",1]})", direct, ""},
        {"the samples", "{}", "{}", "c3"},
        {"the samples, announced", announced, "{}", "c3"},
    };
    for (const auto &row : rows) {
        const InRow named(row.name);
        Answers answers;
        answers.federation = row.federation;
        answers.chats = row.chats;
        answers.contacts =
            R"({"contacts":[{"id":"9","username":"ben"},{"id":"3","username":"ai_orvanetalk"}]})";
        Screen screen(answers);
        screen.load();
        QTRY_COMPARE(screen.requestsTo("/api/messenger/federation/info"), 1);
        outcomeOf(screen.api.get(u"/later"_s));
        screen.http.answerNext(ScriptedAnswer::of(201, R"({"chat":{"id":"made"}})"));
        screen.list->openAssistant();
        if (!*row.opened)
            outcomeOf(screen.api.get(u"/later"_s));
        QTRY_COMPARE(screen.list->selectedChatID.value(), row.opened);
        QCOMPARE(screen.list->isAssistantChat(row.opened), *row.opened != 0);
        QVERIFY(!screen.list->isAssistantChat(u"g"_s));
    }
}

void TestChatListView::withoutChatsTheSamplesStandIn() {
    for (const char *chats : {R"({"chats":[]})", R"({"chats":[{"id":"a"},{"id":5}]})", "{}", "<html>"}) {
        const InRow named(chats);
        Answers answers;
        answers.chats = chats;
        Screen screen(answers);
        screen.load();
        QCOMPARE(screen.ids(), (QStringList{"c3", "c1", "c2", "c4"}));
        // People of the samples whom nobody knows are left out.
        QCOMPARE(screen.chat("c3").participants, QStringList{"ai_orvanetalk"});
        QCOMPARE(screen.list->chats.displayName(screen.chat("c3")), u"Orvane AI"_s);
    }
}

void TestChatListView::aMessageMovesItsChatUpAndCounts() {
    Screen screen;
    screen.load();
    QSignalSpy moves(&screen.list->chats, &QAbstractItemModel::rowsMoved);
    QSignalSpy resets(&screen.list->chats, &QAbstractItemModel::modelReset);
    QSignalSpy removals(&screen.list->chats, &QAbstractItemModel::rowsRemoved);
    screen.message("old");
    QCOMPARE(screen.ids(), (QStringList{"old", "new", "mid"}));
    QCOMPARE(screen.chat("old").unreadCount, 1);
    QCOMPARE(screen.chat("old").lastMessage->content, u"hello"_s);
    screen.message("old");
    QCOMPARE(screen.chat("old").unreadCount, 2);
    QCOMPARE(moves.size(), 1);
    QCOMPARE(resets.size() + removals.size(), 0);
    // The open one is not counted, and opening does not reset what was counted before.
    screen.list->selectedChatID = u"new"_s;
    screen.message("new");
    QCOMPARE(screen.chat("new").unreadCount, 3);
    QCOMPARE(screen.chat("new").lastMessage->content, u"hello"_s);
}

void TestChatListView::badEventsChangeNothing() {
    Screen screen;
    screen.load();
    QSignalSpy moved(&screen.list->chats, &QAbstractItemModel::rowsMoved);
    QSignalSpy changed(&screen.list->chats, &QAbstractItemModel::dataChanged);
    QSignalSpy people(screen.list.get(), &MessengerChatListView::peopleChanged);
    for (const char *event :
         {R"({"type":"messenger_message","chat_id":"x","message":{"sender_id":"9","content":"c"}})",
          R"({"type":"messenger_message","chat_id":"old","message":{"sender_id":"9"}})",
          R"({"type":"user_status","user_id":"99","status":"online"})",
          R"({"type":"user_status","user_id":"9","status":1})",
          R"({"type":"messenger_message_deleted","chat_id":"old","message_id":"m"})"}) {
        screen.arrive(event);
        QVERIFY2(moved.isEmpty() && changed.isEmpty() && people.isEmpty(), event);
        QVERIFY2(screen.notes->added.isEmpty(), event);
    }
}

void TestChatListView::presenceFollowsTheEvents() {
    Screen screen;
    screen.load();
    QSignalSpy told(&screen.list->chats, &QAbstractItemModel::dataChanged);
    QCOMPARE(screen.shown("old", ChatRows::OnlineRole), true);
    // A group is nobody's presence.
    QCOMPARE(screen.shown("new", ChatRows::OnlineRole), false);
    screen.arrive(R"({"type":"user_status","user_id":"9","status":"typing"})");
    QCOMPARE(screen.shown("old", ChatRows::OnlineRole), false);
    screen.arrive(R"({"type":"user_status","user_id":"9","status":"online"})");
    QCOMPARE(screen.shown("old", ChatRows::OnlineRole), true);
    QCOMPARE(told.size(), 2);
}

void TestChatListView::selectingOpensOneChatScreenAtATime() {
    Screen screen;
    // Selected before the list is there, as a notification may do.
    screen.list->selectedChatID = u"mid"_s;
    QVERIFY(!screen.list->openChat());
    screen.load();
    QVERIFY(screen.list->openChat());
    QCOMPARE(screen.list->openChat()->chat.id, u"mid"_s);
    QSignalSpy opened(screen.list.get(), &MessengerChatListView::openChatChanged);
    screen.message("mid");
    QCOMPARE(opened.size(), 0);
    screen.list->selectedChatID = u"new"_s;
    QCOMPARE(screen.list->openChat()->title(), u"Team"_s);
    screen.list->selectedChatID = u"nowhere"_s;
    QVERIFY(!screen.list->openChat());
    QCOMPARE(opened.size(), 2);
}

void TestChatListView::rowsReadNamePreviewAndCount() {
    Screen screen;
    screen.load();
    QCOMPARE(screen.shown("new", ChatRows::SpokenRole), u"Team, b, 3 unread"_s);
    QCOMPARE(screen.shown("old", ChatRows::SpokenRole), u"Ben, a"_s);
    MessengerChat chat = screen.chat("old");
    chat.lastMessage->content = u" two\n\n lines "_s + QString(10'000'000, u'x');
    chat.unreadCount = std::numeric_limits<qint64>::max();
    screen.list->chats.replace(chat);
    const QString preview = screen.shown("old", ChatRows::PreviewRole).toString();
    QVERIFY(preview.startsWith(u"two lines xxx"_s));
    QVERIFY(preview.size() < 300);
    QCOMPARE(screen.shown("old", ChatRows::UnreadCountRole), 100);
    screen.message("old");
    QCOMPARE(screen.shown("old", ChatRows::UnreadCountRole), 100);
    QCOMPARE(screen.list->badge(), u"99+"_s);
}

void TestChatListView::loadingAgainKeepsOneSubscription() {
    Screen screen;
    screen.load();
    screen.list->loadData();
    QTRY_COMPARE(screen.requestsTo("/api/messenger/chats"), 2);
    QTRY_COMPARE(screen.requestsTo("/api/messenger/sync?since=41"), 1);
    screen.message("old");
    QCOMPARE(screen.chat("old").unreadCount, 1);
}

ORVANE_TEST_MAIN(TestChatListView)
#include "tst_chat_list_view.moc"

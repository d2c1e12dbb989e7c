// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
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
    void cursorAndIdentityAreTakenOnlyInTheirType_data();
    void cursorAndIdentityAreTakenOnlyInTheirType();
    void contactsAreReadKeyByKey();
    void withoutChatsTheSamplesStandIn_data();
    void withoutChatsTheSamplesStandIn();
    void aMessageMovesItsChatUpAndCounts();
    void theOpenChatIsNotCounted();
    void badEventsChangeNothing_data();
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

void TestChatListView::cursorAndIdentityAreTakenOnlyInTheirType_data() {
    QTest::addColumn<QByteArray>("sync");
    QTest::addColumn<QByteArray>("federation");
    QTest::addColumn<qint64>("cursor");
    QTest::addColumn<bool>("asked");
    QTest::newRow("cursor as text") << QByteArray(R"({"cursor":"9"})") << QByteArray(R"({"matrix_id":5})")
                                    << qint64(5) << true;
    QTest::newRow("smaller cursor") << QByteArray(R"({"cursor":-2})") << QByteArray("[]") << qint64(-2)
                                    << true;
    QTest::newRow("no JSON ends the task") << QByteArray("<") << QByteArray("{}") << qint64(5) << false;
}

void TestChatListView::cursorAndIdentityAreTakenOnlyInTheirType() {
    QFETCH(QByteArray, sync);
    QFETCH(QByteArray, federation);
    QFETCH(qint64, cursor);
    QFETCH(bool, asked);
    Answers answers;
    answers.sync = sync;
    answers.federation = federation;
    Screen screen(answers);
    screen.session.adoptSyncCursor(5);
    screen.load();
    QTRY_COMPARE(screen.requestsTo("/api/messenger/federation/info"), asked ? 1 : 0);
    QCOMPARE(screen.session.syncCursor.value(), cursor);
    QVERIFY(!screen.session.matrixId.value());
}

void TestChatListView::contactsAreReadKeyByKey() {
    Answers answers;
    answers.contacts = R"({"contacts":[{"id":5,"display_name":"number id"},
        {"id":"1","username":"only_name"},{"id":"2","display_name":4,"username":"u2","status":"away"},
        {"id":"3","display_name":"","status":"online"}]})";
    Screen screen(answers);
    screen.load();
    const Contacts &contacts = screen.list->contacts;
    QCOMPARE(contacts.size(), 5);
    QCOMPARE(contacts.value(u"7"_s).displayName, u"Alex"_s);
    QVERIFY(contacts.value(u"ai_orvanetalk"_s).isAI);
    QCOMPARE(contacts.value(u"1"_s).displayName, u"only_name"_s);
    QCOMPARE(contacts.value(u"2"_s).displayName, u"u2"_s);
    QCOMPARE(contacts.value(u"2"_s).status, UserStatus::offline);
    QCOMPARE(contacts.value(u"3"_s).displayName, QString());
    QCOMPARE(contacts.value(u"3"_s).status, UserStatus::online);
}

void TestChatListView::withoutChatsTheSamplesStandIn_data() {
    QTest::addColumn<QByteArray>("chats");
    QTest::newRow("no chats") << QByteArray(R"({"chats":[]})");
    QTest::newRow("one bad row spoils the list") << QByteArray(R"({"chats":[{"id":"a"},{"id":5}]})");
    QTest::newRow("another key") << QByteArray("{}");
    QTest::newRow("HTML") << QByteArray("<html>");
}

void TestChatListView::withoutChatsTheSamplesStandIn() {
    QFETCH(QByteArray, chats);
    Answers answers;
    answers.chats = chats;
    Screen screen(answers);
    screen.load();
    QCOMPARE(screen.ids(), (QStringList{"c3", "c1", "c2", "c4"}));
    // People of the samples whom nobody knows are left out.
    QCOMPARE(screen.chat("c3").participants, QStringList{"ai_orvanetalk"});
    QCOMPARE(screen.list->chats.displayName(screen.chat("c3")), u"Orvane AI"_s);
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
}

void TestChatListView::theOpenChatIsNotCounted() {
    Screen screen;
    screen.load();
    screen.list->selectedChatID = u"new"_s;
    screen.message("new");
    // Opening does not reset what was counted before.
    QCOMPARE(screen.chat("new").unreadCount, 3);
    QCOMPARE(screen.chat("new").lastMessage->content, u"hello"_s);
}

void TestChatListView::badEventsChangeNothing_data() {
    QTest::addColumn<QByteArray>("event");
    QTest::newRow("unknown chat") << QByteArray(
        R"({"type":"messenger_message","chat_id":"x","message":{"sender_id":"9","content":"c"}})");
    QTest::newRow("chat as number") << QByteArray(
        R"({"type":"messenger_message","chat_id":5,"message":{"sender_id":"9","content":"c"}})");
    QTest::newRow("no message") << QByteArray(R"({"type":"messenger_message","chat_id":"old"})");
    QTest::newRow("no content") << QByteArray(
        R"({"type":"messenger_message","chat_id":"old","message":{"sender_id":"9"}})");
    QTest::newRow("content as number") << QByteArray(
        R"({"type":"messenger_message","chat_id":"old","message":{"sender_id":"9","content":1}})");
    QTest::newRow("no sender") << QByteArray(
        R"({"type":"messenger_message","chat_id":"old","message":{"content":"c"}})");
    QTest::newRow("status of a stranger")
        << QByteArray(R"({"type":"user_status","user_id":"99","status":"online"})");
    QTest::newRow("status as number") << QByteArray(R"({"type":"user_status","user_id":"9","status":1})");
    QTest::newRow("another type") << QByteArray(
        R"({"type":"messenger_message_deleted","chat_id":"old","message_id":"m"})");
}

void TestChatListView::badEventsChangeNothing() {
    QFETCH(QByteArray, event);
    Screen screen;
    screen.load();
    QSignalSpy moved(&screen.list->chats, &QAbstractItemModel::rowsMoved);
    QSignalSpy changed(&screen.list->chats, &QAbstractItemModel::dataChanged);
    const int revision = screen.list->contactsRevision;
    screen.arrive(event);
    QCOMPARE(moved.size() + changed.size() + screen.notes->added.size(), 0);
    QCOMPARE(screen.list->contactsRevision.value(), revision);
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

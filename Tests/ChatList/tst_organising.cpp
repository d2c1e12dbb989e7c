// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
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

    QJsonObject bodyTo(const QByteArray &path) const {
        for (const RecordedRequest &request : http.requests()) {
            if (request.method == "POST" && request.target == path)
                return json::parseObject(request.body).value();
        }
        return {};
    }
};

} // namespace

class TestOrganising : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aGroupIsOfTheKindThatItsFormSays_data();
    void aGroupIsOfTheKindThatItsFormSays();
    void aGroupIsWhatTheServerMadeOfIt_data();
    void aGroupIsWhatTheServerMadeOfIt();
    void channelsAreReadRecordByRecord_data();
    void channelsAreReadRecordByRecord();
    void aFolderIsMadeAndOpened_data();
    void aFolderIsMadeAndOpened();
    void theSavedChatAlwaysOpens_data();
    void theSavedChatAlwaysOpens();
    void aSearchAsksFromTwoCharactersOn_data();
    void aSearchAsksFromTwoCharactersOn();
    void starredRecordsAreReadKeyByKey_data();
    void starredRecordsAreReadKeyByKey();
    void whatCanNotBeHadChangesNothing();
};

void TestOrganising::aGroupIsOfTheKindThatItsFormSays_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("remote");
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QJsonObject>("body");
    const QJsonArray people{9};
    QTest::newRow("plain") << " Team" << QString() << QByteArray("/api/messenger/chats")
                           << QJsonObject{{"user_id", 7},
                                          {"type", "group"},
                                          {"title", " Team"},
                                          {"participants", people}};
    QTest::newRow("plain, no name")
        << QString() << "ben:home, @x, ,\n@y" << QByteArray("/api/messenger/chats")
        << QJsonObject{{"user_id", 7}, {"type", "group"}, {"title", "Group"}, {"participants", people}};
    QTest::newRow("federated") << "Team"
                               << "a, \t@b:c ,@d:e" << QByteArray("/api/messenger/chats/federated")
                               << QJsonObject{{"title", "Team"},
                                              {"local_participants", people},
                                              {"remote_participants", QJsonArray{"@b:c", "@d:e"}}};
    QTest::newRow("federated, no name") << QString() << "@b:c" << QByteArray("/api/messenger/chats/federated")
                                        << QJsonObject{{"title", "🌐 Federated Group"},
                                                       {"local_participants", people},
                                                       {"remote_participants", QJsonArray{"@b:c"}}};
}

void TestOrganising::aGroupIsOfTheKindThatItsFormSays() {
    QFETCH(QString, name);
    QFETCH(QString, remote);
    QFETCH(QByteArray, path);
    QFETCH(QJsonObject, body);
    Desk desk;
    NewGroup &form = *desk.list->newGroup();
    form.showNewGroup = true;
    form.groupName = name;
    form.groupRemoteMX = remote;
    form.toggleParticipant(u"5"_s);
    form.toggleParticipant(u"9"_s);
    form.toggleParticipant(u"5"_s);
    desk.http.answerNext(ScriptedAnswer::of(200, R"({"chat":{"id":"g"}})"));
    form.createGroup();
    QVERIFY(!form.showNewGroup && form.groupName.value().isEmpty() && form.groupRemoteMX.value().isEmpty() &&
            form.groupParticipants.value().isEmpty());
    QTRY_COMPARE(desk.list->selectedChatID.value(), u"g"_s);
    QCOMPARE(desk.bodyTo(path), body);
    QCOMPARE(desk.list->chats.find(u"g"_s)->participants, QStringList{"9"});
}

void TestOrganising::aGroupIsWhatTheServerMadeOfIt_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("made");
    QTest::newRow("nested")
        << 200
        << QByteArray(R"({"chat":{"id":"g","title":"T","federated":true,"zk_mode":true,"room_id":"r"}})")
        << "g/T/1/1/r";
    QTest::newRow("bare, other key") << 201 << QByteArray(R"({"chat_id":"g"})") << "g/Team/0/0/";
    QTest::newRow("values of another type")
        << 200 << QByteArray(R"({"id":"g","title":5,"federated":"yes","room_id":1})") << "g/Team/0/0/";
    QTest::newRow("no id") << 200 << QByteArray(R"({"chat":{"title":"T"}})") << QString();
    QTest::newRow("id as number") << 200 << QByteArray(R"({"id":5})") << QString();
    QTest::newRow("a list") << 200 << QByteArray("[]") << QString();
    QTest::newRow("refused") << 500 << QByteArray(R"({"chat":{"id":"g"}})") << QString();
}

void TestOrganising::aGroupIsWhatTheServerMadeOfIt() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, made);
    Desk desk;
    QSignalSpy created(desk.list->newGroup(), &NewGroup::created);
    desk.http.answerNext(ScriptedAnswer::of(status, answer));
    desk.list->newGroup()->groupName = u"Team"_s;
    desk.list->newGroup()->createGroup();
    QTRY_VERIFY(!desk.http.requests().isEmpty());
    if (made.isEmpty()) {
        // The next request is answered after the first one has been looked at.
        desk.list->folders()->loadFolders();
        QTRY_COMPARE(desk.http.requests().size(), 2);
        QCOMPARE(created.size(), 0);
        QVERIFY(desk.list->selectedChatID.value().isEmpty());
        return;
    }
    QTRY_COMPARE(created.size(), 1);
    const MessengerChat chat = *desk.list->chats.find(u"g"_s);
    QCOMPARE(u"%1/%2/%3/%4/%5"_s.arg(chat.id, chat.title.value_or(QString()))
                 .arg(chat.federated)
                 .arg(chat.zkMode)
                 .arg(chat.roomId.value_or(QString())),
             made);
    QVERIFY(chat.type == ChatType::group && !chat.aiEnabled);
}

void TestOrganising::channelsAreReadRecordByRecord_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("titles");
    QTest::newRow("title, name, neither")
        << QByteArray(R"({"channels":[{"id":"a","title":"A","name":"x"},{"id":"b","name":"B"},{"id":"c"}]})")
        << QStringList{"A", "B", QString()};
    QTest::newRow("records without a text id")
        << QByteArray(R"({"channels":[{"id":5,"title":"A"},{"title":"B"},{"id":"c","title":"C"}]})")
        << QStringList{"C"};
    QTest::newRow("none left") << QByteArray(R"({"channels":[]})") << QStringList();
}

void TestOrganising::channelsAreReadRecordByRecord() {
    QFETCH(QByteArray, answer);
    QFETCH(QStringList, titles);
    Desk desk;
    Channels &channels = *desk.list->channels();
    channels.channelName = u" \n"_s;
    channels.createChannel();
    desk.http.answerNext(ScriptedAnswer::of(200, R"({"channel":{"id":"n"}})"));
    channels.channelName = u" News "_s;
    channels.createChannel();
    QTRY_COMPARE(channels.channels.count(), 1);
    QCOMPARE(channels.channels.at(0).type, ChatType::channel);
    QCOMPARE(desk.bodyTo("/api/messenger/channels"), (QJsonObject{{"title", "News"}, {"user_id", 7}}));
    QCOMPARE(desk.http.requests().size(), 1);
    desk.http.answerNext(ScriptedAnswer::of(200, answer));
    channels.loadChannels();
    const auto shown = [&] {
        QStringList result;
        for (const MessengerChat &channel : channels.channels.records())
            result.append(channel.title.value_or(QString()));
        return result;
    };
    QTRY_COMPARE(shown(), titles);
}

void TestOrganising::aFolderIsMadeAndOpened_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("open");
    QTest::newRow("made") << 201 << QByteArray(R"({"folder":{"id":"f","name":"Work"}})") << "f";
    QTest::newRow("no id") << 200 << QByteArray(R"({"folder":{"name":"Work"}})") << QString();
    QTest::newRow("refused") << 500 << QByteArray() << QString();
}

void TestOrganising::aFolderIsMadeAndOpened() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, open);
    Desk desk;
    Folders &folders = *desk.list->folders();
    folders.newFolderName = u"  "_s;
    folders.createFolder();
    desk.http.answerNext(ScriptedAnswer::of(status, answer));
    folders.newFolderName = u" Work "_s;
    folders.createFolder();
    QVERIFY(folders.newFolderName.value().isEmpty());
    QTRY_COMPARE(desk.http.requests().size(), 1);
    QCOMPARE(desk.bodyTo("/api/messenger/folders"), (QJsonObject{{"name", "Work"}, {"icon", "📁"}}));
    QTRY_COMPARE(folders.activeFolderId.value(), open);
    QCOMPARE(folders.chatFolders.count(), open.isEmpty() ? 0 : 1);
    // An open folder without chats shows none.
    QCOMPARE(folders.active() != nullptr, !open.isEmpty());
}

void TestOrganising::theSavedChatAlwaysOpens_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("requests");
    QTest::newRow("nested") << 200 << QByteArray(R"({"chat":{"id":"s"}})") << "s" << 1;
    QTest::newRow("bare") << 200 << QByteArray(R"({"id":"s"})") << "s" << 1;
    QTest::newRow("server down: its own, and it is asked again") << 500 << QByteArray() << "saved_7" << 2;
}

void TestOrganising::theSavedChatAlwaysOpens() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(QString, id);
    QFETCH(int, requests);
    Desk desk;
    desk.http.answerFor("/api/messenger/saved", ScriptedAnswer::of(status, answer));
    for (int time = 0; time < 2; ++time) {
        desk.list->selectedChatID = QString();
        desk.list->openSavedChat();
        QTRY_COMPARE(desk.list->selectedChatID.value(), id);
    }
    QCOMPARE(desk.requestsTo("/api/messenger/saved?user_id=7"), requests);
    QCOMPARE(desk.list->chats.rowCount(), 1);
    QCOMPARE(desk.list->openChat()->title(), u"Saved Messages"_s);
    QCOMPARE(desk.list->openChat()->chat.participants, QStringList{"7"});
}

void TestOrganising::aSearchAsksFromTwoCharactersOn_data() {
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("hits");
    QTest::newRow("one character") << "a" << QByteArray() << 0;
    QTest::newRow("two")
        << "ab"
        << QByteArray(
               R"({"messages":[{"id":"m","chat_id":"c","sender_id":"9","content":"x","created_at":1}]})")
        << 1;
    QTest::newRow("no list") << "ab" << QByteArray(R"({"messages":{"0":1}})") << 0;
    QTest::newRow("hits that lack something")
        << "ab" << QByteArray(R"({"messages":[{"chat_id":5,"content":"x"},{"id":"m"},{"content":7}]})") << 0;
}

void TestOrganising::aSearchAsksFromTwoCharactersOn() {
    QFETCH(QString, query);
    QFETCH(QByteArray, answer);
    QFETCH(int, hits);
    Desk desk;
    desk.http.answerFor("/api/messenger/search/global", ScriptedAnswer::of(200, answer));
    desk.list->searchText = query;
    QTRY_VERIFY(!desk.list->search()->isSearchingMessages);
    QTRY_COMPARE(desk.list->search()->searchResults.count(), hits);
    QCOMPARE(desk.http.requests().isEmpty(), answer.isEmpty());
    desk.list->searchText = QString();
    QTRY_COMPARE(desk.list->search()->searchResults.count(), 0);
}

void TestOrganising::starredRecordsAreReadKeyByKey_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("count");
    QTest::newRow("whole")
        << QByteArray(
               R"({"messages":[{"id":"m","chat_id":"c","sender_id":"9","content":"x","created_at":10}]})")
        << 1;
    QTest::newRow("no time")
        << QByteArray(R"({"messages":[{"id":"m","chat_id":"c","sender_id":"9","content":"x"}]})") << 1;
    QTest::newRow("keys of another type")
        << QByteArray(
               R"({"messages":[{"id":1,"chat_id":"c","sender_id":"9","content":"x"},{"id":"m","chat_id":"c","sender_id":9,"content":"x"},{"id":"m"}]})")
        << 0;
    QTest::newRow("no JSON") << QByteArray("<html>") << 0;
}

void TestOrganising::starredRecordsAreReadKeyByKey() {
    QFETCH(QByteArray, answer);
    QFETCH(int, count);
    Desk desk;
    desk.http.answerFor("/api/messenger/starred", ScriptedAnswer::of(200, answer));
    StarredMessagesView &starred = *desk.list->starredMessages();
    starred.loadStarred();
    QVERIFY(starred.isLoading);
    QTRY_VERIFY(!starred.isLoading);
    QCOMPARE(starred.messages.count(), count);
    if (count > 0)
        QCOMPARE(starred.senderName(starred.messages.at(0).senderID), u"9"_s);
}

void TestOrganising::whatCanNotBeHadChangesNothing() {
    Desk desk;
    desk.http.answerNext(ScriptedAnswer::of(200, R"({"channels":[{"id":"a","title":"A"}]})"));
    desk.list->channels()->loadChannels();
    QTRY_COMPARE(desk.list->channels()->channels.count(), 1);
    desk.http.answerNext(ScriptedAnswer::of(200, R"({"folders":[{"id":"f","name":"F","chat_ids":["a"]}]})"));
    desk.list->folders()->loadFolders();
    QTRY_COMPARE(desk.list->folders()->chatFolders.count(), 1);
    for (const ScriptedAnswer &answer : {ScriptedAnswer::of(500), ScriptedAnswer::of(401, "{}")}) {
        desk.http.answerNext(answer);
        desk.http.answerNext(answer);
        const qsizetype before = desk.http.requests().size();
        desk.list->channels()->loadChannels();
        desk.list->folders()->loadFolders();
        QTRY_COMPARE(desk.http.requests().size(), before + 2);
    }
    QCOMPARE(desk.list->channels()->channels.count(), 1);
    QCOMPARE(desk.list->folders()->chatFolders.count(), 1);
}

ORVANE_TEST_MAIN(TestOrganising)
#include "tst_organising.moc"

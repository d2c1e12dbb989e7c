// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
#include "Support/InRow.h"
#include "Support/KnownAddressBook.h"
#include "Support/OpenChatParts.h"
#include "Support/ScreenWindow.h"

#include <QRegularExpression>
#include <QStyleHints>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QString endless(10'000, u'W');
const QString german = u"Donaudampfschifffahrtsgesellschaftskapitänsmützenverwaltung"_s;
const QString arabic = u"فريق التصميم والهندسة في المدينة الجديدة"_s;

QJsonObject chatOf(const QString &id, const QString &title, const QString &last, int unread = 0,
                   const char *type = "group") {
    return {{"id", id},
            {"type", type},
            {"title", title},
            {"participants", QJsonArray{QJsonObject{{"user_id", 7}}, QJsonObject{{"user_id", 9}}}},
            {"last_message", last},
            {"last_msg_at", 1'700'000'000 - id.toInt() * 90'000},
            {"unread_count", unread}};
}

QJsonObject personOf(const QString &id, const QString &name, const char *status) {
    return {{"id", id}, {"display_name", name}, {"username", "name_" + id}, {"status", status}};
}

/// The main screen in a window of its own, with names of every kind that is hard to draw.
struct Window : OpenChatParts {
    KnownAddressBook *book = new KnownAddressBook;
    ContactImporter importer{std::unique_ptr<AddressBook>(book), api};
    std::shared_ptr<MessengerChatListView> list;
    ScreenWindow view;

    Window() {
        signIn();
        const auto answer = [this](const char *path, const char *key, const QJsonArray &records) {
            http.answerFor(QByteArray("/api/messenger/") + path,
                           ScriptedAnswer::of(200, json::compact({{QLatin1StringView(key), records}})));
        };
        QJsonObject federated = chatOf("6", "Lobby", "hi");
        federated.insert("federated", true);
        answer("chats", "chats",
               {chatOf("1", "Планёрка", "See you at eleven, bring the numbers.", 3),
                chatOf("2", endless, endless, 2'000'000'000),
                chatOf("3", german, "Rücksprache wegen der Entwässerungsanlagen", 12, "direct"),
                chatOf("4", "👩‍👩‍👧🏳️‍🌈🇩🇪😀", "😀 👍🏽 ❤️"),
                chatOf("5", arabic, "שלום, נתראה בשעה אחת עשרה", 1, "direct"), federated,
                chatOf("7", "two\nlines", "of\n\ntext"), chatOf("8", "", ""),
                chatOf("9", "News", "<b>not bold</b> &amp;", 100, "channel"),
                chatOf("10", "Анна", "", 0, "direct"), chatOf("11", "Ben", "ok", 0, "direct")});
        answer("contacts", "contacts",
               {personOf("9", german + german, "online"), personOf("10", arabic, "offline"),
                personOf("11", endless, "online"), personOf("12", "Ёлка 🎄", "away")});
        answer("contacts/requests", "requests",
               {personOf("20", endless, ""), personOf("21", arabic, ""), personOf("22", "Kim", "")});
        answer("users/search", "users", {personOf("30", german, ""), personOf("31", "Kim", "")});
        answer("channels", "channels",
               {QJsonObject{{"id", "n"}, {"title", german}}, QJsonObject{{"id", "o"}, {"title", arabic}}});
        answer("folders", "folders",
               {QJsonObject{{"id", "f"}, {"name", "Arbeit"}, {"icon", "📁"}, {"chat_ids", QJsonArray{"1"}}},
                QJsonObject{{"id", "g"}, {"name", endless}, {"icon", "📁"}, {"chat_ids", QJsonArray()}}});
        QJsonArray starred;
        for (const QString &text : {u"Short."_s, endless, arabic})
            starred.append(QJsonObject{{"id", text.left(3)},
                                       {"chat_id", "1"},
                                       {"sender_id", "9"},
                                       {"content", text},
                                       {"created_at", 1'700'000'000}});
        answer("starred", "messages", starred);
        answer("search/global", "messages", starred);
        answer("chats/1/messages", "messages", {});
        list = std::make_shared<MessengerChatListView>(MessengerChatListView::Parts{
            chatParts(), session, [this]() -> ContactImporter & { return importer; }});
        view.resize(900, 700);
        view.open(u"qrc:/OrvaneTalk/ChatList/ChatListScreen.qml"_s,
                  {{"screen", QVariant::fromValue(list.get())}, {"focus", true}});
    }

    QQuickItem *rowOf(const QString &chatID) const { return view.item("chatID", chatID); }
};

/// What can't be read as it stands: texts that run out of their own width, or out of the window where nothing
/// scrolls them into it.
QStringList misplacedTexts(QQuickItem *item, const QRectF &room) {
    QStringList found;
    if (!item->isVisible() || item->opacity() == 0.0)
        return found;
    QRectF inner = room;
    if (item->clip())
        inner = QRectF(-1e6, room.top(), 2e6, room.height());
    if (item->inherits("QQuickText") && !item->property("text").toString().isEmpty()) {
        const QRectF place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        if (place.left() < inner.left() - 1 || place.right() > inner.right() + 1 ||
            item->property("contentWidth").toDouble() > item->width() + 1)
            found.append(item->property("text").toString().left(40));
    }
    for (QQuickItem *child : item->childItems())
        found += misplacedTexts(child, inner);
    return found;
}

} // namespace

class TestChatListScreen : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyScreenIsDrawnInEveryTheme_data();
    void everyScreenIsDrawnInEveryTheme();
    void theMenuIsTheRowsOwn();
    void aReusedRowIsThatOfItsChat();
    void theListIsWalkedByKeys();
    void theMenuOpensWhereverTheFocusIsInTheList();
    void whatIsNotShownIsNotTold();
    void aPlaceWithoutChatsSaysWhy();
    void theOpenRowIsToldApart();
    void aChatLooksAlikeInTheListAndOpen();
    void everySymbolHasATip();
    void whatIsWrittenStaysInItsChat();
};

void TestChatListScreen::everyScreenIsDrawnInEveryTheme_data() {
    QTest::addColumn<int>("theme");
    QTest::addColumn<QSize>("size");
    for (const OrvaneTheme theme : allThemes()) {
        for (const QSize size : {QSize(800, 600), QSize(1280, 800), QSize(2560, 1440)})
            QTest::addRow("%s %d", qUtf8Printable(rawValue(theme)), size.width()) << int(theme) << size;
    }
}

void TestChatListScreen::everyScreenIsDrawnInEveryTheme() {
    QFETCH(int, theme);
    QFETCH(QSize, size);
    // The toolkit says so of rows it has begun to make ahead when a filter takes them away; it means no harm.
    QTest::failOnWarning(QRegularExpression(u"^(?!DelegateModel::cancel)"_s));
    Window window;
    ScreenWindow &view = window.view;
    MessengerChatListView &list = *window.list;
    view.use(OrvaneTheme(theme));
    // Every sheet must come and go without a transition too.
    view.tokens()->setProperty("reducedMotion", size.width() > 2000);
    view.resize(size);
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTRY_VERIFY(!list.isLoading);
    const auto drawn = [&view](const QString &name) {
        const auto misplaced = [&view] {
            return misplacedTexts(view.contentItem(), QRectF(QPointF(), view.size()));
        };
        if (!QTest::qWaitFor([&] { return view.isSettled() && misplaced().isEmpty(); }) && !view.isSettled())
            return QStringList("still moving");
        view.takePicture(name);
        return misplaced();
    };
    QTRY_VERIFY(view.item("title", "Starred Messages") && window.rowOf("4"));
    list.togglePinned(u"4"_s);
    // Whatever came later, the list shows its beginning.
    QVERIFY(view.item("title", "Orvane AI")->mapToScene(QPointF()).y() > 100);
    QCOMPARE(drawn("list"), QStringList());
    list.selectedChatID = u"1"_s;
    QTRY_VERIFY(view.item("placeholderText", "Message..."));
    QCOMPARE(drawn("chat"), QStringList());
    list.newGroup()->showNewGroup = true;
    QTRY_VERIFY(view.showsAnywhere("placeholderText", "Group name"));
    list.newGroup()->toggleParticipant(u"10"_s);
    QCOMPARE(drawn("group"), QStringList());
    list.newGroup()->showNewGroup = false;
    list.channels()->showNewChannel = true;
    QCOMPARE(drawn("channel"), QStringList());
    list.channels()->showNewChannel = false;
    list.folders()->showNewFolderAlert = true;
    QTRY_VERIFY(view.showsAnywhere("placeholderText", "Название"));
    QCOMPARE(drawn("folder"), QStringList());
    list.folders()->showNewFolderAlert = false;
    list.showStarred = true;
    QTRY_VERIFY(view.showsAnywhere("text", "Short."));
    QCOMPARE(drawn("starred"), QStringList());
    list.showStarred = false;
    list.showContacts = true;
    QTRY_VERIFY(view.showsAnywhere("text", "My contacts (4)"));
    QTRY_VERIFY(view.showsAnywhere("text", "Requests (3)"));
    QCOMPARE(drawn("contacts"), QStringList());
    view.type("kim");
    QTRY_VERIFY(view.showsAnywhere("text", "@name_31"));
    view.click("Import address book");
    QTRY_VERIFY(view.showsAnywhere("text", "В адресной книге нет контактов для импорта."));
    QCOMPARE(drawn("found"), QStringList());
    view.click("Requests (3)");
    QTRY_VERIFY(view.showsAnywhere("text", "wants to connect"));
    QCOMPARE(drawn("requests"), QStringList());
    list.showContacts = false;
    list.searchText = u"ko"_s;
    QTRY_VERIFY(view.item("text", "Search results"));
    QVERIFY(view.item("title", "Orvane AI")->mapToScene(QPointF()).y() > 100);
    QCOMPARE(drawn("search"), QStringList());
}

void TestChatListScreen::theMenuIsTheRowsOwn() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.rowOf("5"));
    const auto menuOf = [&window](const char *id) {
        window.rowOf(QLatin1StringView(id))->forceActiveFocus();
        QTest::keyClick(&window.view, Qt::Key_F10, Qt::ShiftModifier);
    };
    menuOf("5");
    QTRY_VERIFY(window.view.showsAnywhere("text", "Pin"));
    QTest::keyClick(&window.view, Qt::Key_Down);
    QTest::keyClick(&window.view, Qt::Key_Return);
    QTRY_COMPARE(window.list->chats.at(0).id, "5");
    QTRY_VERIFY(!window.view.showsAnywhere("text", "Pin"));
    menuOf("5");
    QTRY_VERIFY(window.view.showsAnywhere("text", "Unpin"));
    QTest::keyClick(&window.view, Qt::Key_Escape);
    QTRY_VERIFY(!window.view.showsAnywhere("text", "Unpin"));
    // The keyboard goes on where it was.
    QTRY_VERIFY(window.rowOf("5")->hasActiveFocus());
    QTRY_VERIFY(window.list->folders()->chatFolders.count() == 2);
    menuOf("1");
    QTRY_VERIFY(window.view.showsAnywhere("text", "Add to folder"));
    QTRY_VERIFY(window.view.isSettled());
    window.view.click("Delete");
    QTRY_VERIFY(!window.list->chats.find("1"));
    QVERIFY(window.list->chats.find("5"));
    // The keys know of no entry that isn't there.
    window.list->folders()->chatFolders.assign({});
    menuOf("5");
    QTRY_VERIFY(window.view.showsAnywhere("text", "Delete"));
    QVERIFY(!window.view.showsAnywhere("text", "Add to folder"));
    for (const int key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return})
        window.view.press(key);
    QTRY_VERIFY(!window.list->chats.find("5"));
}

void TestChatListScreen::aReusedRowIsThatOfItsChat() {
    Window window;
    QJsonArray many;
    for (int number = 0; number < 300; ++number)
        many.append(chatOf(QString::number(number), u"Chat %1"_s.arg(number), "hi", number % 3,
                           number % 2 ? "direct" : "group"));
    window.http.answerFor("/api/messenger/chats", ScriptedAnswer::of(200, json::compact({{"chats", many}})));
    window.list->loadData();
    QTRY_COMPARE(window.list->chats.count(), 300);
    QQuickItem *list = window.view.item("count", 300);
    QVERIFY(list);
    for (const int top : {250, 100, 299, 0, 40}) {
        QMetaObject::invokeMethod(list, "positionViewAtIndex", Q_ARG(int, top), Q_ARG(int, 0));
        QTRY_VERIFY(window.rowOf(QString::number(top)));
        QQuickItem *row = window.rowOf(QString::number(top));
        QVERIFY(findItem(row, "text", u"Chat %1"_s.arg(top)));
        QCOMPARE(findItem(row, "text", "C") != nullptr, top % 2 == 1);
        QCOMPARE(findItem(row, "name", "person.3.fill") != nullptr, top % 2 == 0);
        QCOMPARE(findItem(row, "count", top % 3) != nullptr, top % 3 > 0);
    }
}

void TestChatListScreen::theListIsWalkedByKeys() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.rowOf("4") && window.view.item("title", "Starred Messages"));
    const auto focused = [&window] {
        const QQuickItem *item = window.view.activeFocusItem();
        const QString chatID = item ? item->property("chatID").toString() : QString();
        return chatID.isEmpty() && item ? item->property("title").toString() : chatID;
    };
    const auto isInSight = [&window] {
        const QQuickItem *item = window.view.activeFocusItem();
        const QQuickItem *list = window.view.item("count", window.list->chats.count());
        return list->mapRectToScene(list->boundingRect())
            .contains(item->mapRectToScene(item->boundingRect()));
    };
    const QString last = window.list->chats.at(window.list->chats.count() - 1).id;
    window.rowOf("1")->forceActiveFocus();
    for (const auto &[key, expected] :
         {std::pair(Qt::Key_End, last), {Qt::Key_Home, QString("Orvane AI")}, {Qt::Key_End, last}}) {
        window.view.press(key);
        QCOMPARE(focused(), expected);
        QTRY_VERIFY(isInSight());
    }
    // By pages the way goes over fixed rows and chats, and every page ends in sight.
    QStringList up, down;
    while (focused() != "Orvane AI" && up.size() < 20) {
        window.view.press(Qt::Key_PageUp);
        up.append(focused());
        QTRY_VERIFY(isInSight());
    }
    while (focused() != last && down.size() < 20) {
        window.view.press(Qt::Key_PageDown);
        down.append(focused());
        QTRY_VERIFY(isInSight());
    }
    QCOMPARE(up.size(), down.size());
    QVERIFY(up.size() > 1 && up.size() < 10);
}

void TestChatListScreen::theMenuOpensWhereverTheFocusIsInTheList() {
    for (const auto &[key, modifier] :
         {std::pair(Qt::Key_Menu, Qt::NoModifier), {Qt::Key_F10, Qt::ShiftModifier}}) {
        Window window;
        QVERIFY(QTest::qWaitForWindowActive(&window.view));
        QTRY_VERIFY(window.rowOf("1"));
        QQuickItem *list = window.view.item("count", window.list->chats.count());
        // As Tab comes into the list, and as it is after the list has been filled anew.
        for (const char *search : {"", "Be", ""}) {
            list->forceActiveFocus(Qt::TabFocusReason);
            window.list->searchText = QLatin1StringView(search);
            QTRY_COMPARE(list->property("count").toInt(), *search ? 1 : 11);
            QTRY_VERIFY(window.view.activeFocusItem() != list);
            window.view.press(key, modifier);
            QTRY_VERIFY(window.view.showsAnywhere("text", "Pin"));
            window.view.press(Qt::Key_Escape);
            QTRY_VERIFY(!window.view.showsAnywhere("text", "Pin"));
            QVERIFY(!window.view.activeFocusItem()->property("chatID").toString().isEmpty());
        }
        // The menu of a chat is not that of a row which is none.
        window.view.item("title", "Orvane AI")->forceActiveFocus();
        window.view.press(key, modifier);
        QVERIFY(!window.view.showsAnywhere("text", "Pin"));
    }
}

void TestChatListScreen::whatIsNotShownIsNotTold() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.rowOf("1") && window.view.item("title", "Starred Messages"));
    const auto told = [&window] {
        QStringList names;
        QAccessibleInterface *list = window.view.accessible("Chats");
        for (int index = 0; index < list->childCount(); ++index)
            if (list->child(index)->role() == QAccessible::ListItem)
                names.append(list->child(index)->text(QAccessible::Name).section(',', 0, 0).left(20));
        names.sort();
        return names;
    };
    QVERIFY(told().contains("Планёрка") && told().contains("Starred Messages"));
    window.rowOf("1")->forceActiveFocus();
    window.list->deleteChat("1");
    window.list->starredCount = 0;
    QTRY_VERIFY(!told().contains("Планёрка") && !told().contains("Starred Messages"));
    // The keyboard is at a row that is there.
    QTRY_VERIFY(window.view.activeFocusItem()->property("chatID").toString().size() > 0);
    QVERIFY(window.view.activeFocusItem()->property("chatID") != "1");
    window.list->searchText = "Ben";
    QTRY_COMPARE(told().filter("Ben").size(), 1);
    QTRY_COMPARE(told().filter("WWW").size(), 0);
    window.list->searchText = "";
    QTRY_COMPARE(told().filter("WWW").size(), 1);
}

void TestChatListScreen::aPlaceWithoutChatsSaysWhy() {
    Window window;
    MessengerChatListView &list = *window.list;
    const auto shows = [&window](const char *words) { return window.view.item("text", words) != nullptr; };
    QVERIFY(list.isLoading && !shows("No chats yet"));
    QTRY_VERIFY(window.rowOf("1") && list.folders()->chatFolders.count() == 2);
    list.folders()->activeFolderId = "g";
    QTRY_VERIFY(shows("No chats in this folder yet"));
    window.view.takePicture("empty folder");
    list.folders()->activeFolderId = "";
    QTRY_VERIFY(window.rowOf("1") && !shows("No chats in this folder yet"));
    // Fewer than two characters ask nobody.
    list.searchText = u"ъ"_s;
    QTRY_VERIFY(shows("Nothing found"));
    const QByteArray nowhere = "/api/messenger/search/global";
    window.http.answerFor(nowhere, ScriptedAnswer::of(200, json::compact({{"messages", QJsonArray()}})));
    list.searchText = u"xyzzy"_s;
    QVERIFY(list.search()->isSearchingMessages && list.chats.count() == 0 && !shows("Nothing found"));
    list.searchText = u"xyzzyx"_s;
    bool tooSoon = false;
    connect(list.search(), &MessageSearch::searchesRunningChanged, this,
            [&] { tooSoon |= list.search()->searchesRunning > 0 && shows("Nothing found"); });
    QTRY_VERIFY(shows("Nothing found"));
    QVERIFY(!tooSoon);
    window.view.takePicture("nothing found");
    list.searchText = QString();
    QTRY_VERIFY(!shows("Nothing found"));
    for (const char *id : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"})
        list.deleteChat(QLatin1StringView(id));
    QTRY_VERIFY(shows("No chats yet"));
}

void TestChatListScreen::theOpenRowIsToldApart() {
    Window window;
    MessengerChatListView &list = *window.list;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.rowOf("1"));
    MessengerChat helper;
    helper.id = "ai";
    helper.title = "Helper";
    helper.participants = {"7", "ai_orvanetalk"};
    list.chats.insertFirst(helper);
    window.http.answerFor("/api/messenger/saved", ScriptedAnswer::of(500, "{}"));
    const auto selected = [&window](const QString &name) {
        const QAccessibleInterface *row = window.view.accessible(name);
        return row && row->state().selected;
    };
    const QString channel = german + ", Channel";
    const QString saved = "Saved Messages, Your personal space";
    const QString ai = "Orvane AI, Your AI assistant";
    const auto marked = [&] {
        QStringList names;
        for (const QString &name : {channel, saved, ai})
            if (selected(name))
                names.append(name);
        return names;
    };
    QTRY_VERIFY(window.view.accessible(channel));
    QCOMPARE(marked(), QStringList());
    const QImage plain = window.view.grabWindow();
    window.view.act(channel, "Press");
    QTRY_COMPARE(marked(), QStringList{channel});
    const QQuickItem *row = window.view.item("title", german);
    const QRect place = row->mapRectToScene(row->boundingRect()).toRect();
    QTRY_VERIFY(window.view.grabWindow().copy(place) != plain.copy(place));
    window.view.takePicture("open channel");
    window.view.act(ai, "Press");
    QTRY_COMPARE(marked(), QStringList{ai});
    window.view.act(saved, "Press");
    QTRY_COMPARE(marked(), QStringList{saved});
    window.view.takePicture("open saved chat");
    list.selectedChatID = "1";
    QTRY_COMPARE(marked(), QStringList());
    QVERIFY(window.view.accessible("Планёрка, See you at eleven, bring the numbers., 3 unread")
                ->state()
                .selected);
}

void TestChatListScreen::aChatLooksAlikeInTheListAndOpen() {
    const auto hue = [](QQuickItem *place) { return findItem(place, "size", 40)->property("color"); };
    // With no name, the own saved one, one with nobody known.
    for (const auto &[title, participants] : {std::pair(u" "_s, QStringList{"7", "9"}),
                                              {u"Mine"_s, QStringList{"7"}},
                                              {u"Alone"_s, QStringList()}}) {
        const InRow row(title.toUtf8());
        Window window;
        QTRY_VERIFY(window.rowOf("1"));
        const QString name = title == u" " ? u"Chat"_s : title;
        MessengerChat chat;
        chat.id = "saved";
        QVERIFY(window.view.tokens()->hueOf(chat.id) != window.view.tokens()->hueOf(QString()));
        chat.title = title;
        chat.participants = participants;
        chat.updatedAt = QDateTime::currentDateTimeUtc();
        window.list->chats.insertFirst(chat);
        window.list->selectedChatID = chat.id;
        QTRY_VERIFY(window.view.item("placeholderText", "Message...") && window.rowOf(chat.id));
        const auto members = participants.size() + (participants.contains("7") ? 0 : 1);
        QQuickItem *header = nullptr;
        QTRY_VERIFY((header = window.view.item("members", members)));
        QVERIFY(findItem(window.rowOf(chat.id), "text", name) && findItem(header, "text", name));
        QVERIFY(window.view.accessible(name));
        QCOMPARE(hue(header), hue(window.rowOf(chat.id)));
    }
}

void TestChatListScreen::everySymbolHasATip() {
    Window window;
    QTRY_VERIFY(window.rowOf("1") && window.view.item("text", "New channel"));
    QGuiApplication::styleHints()->setMousePressAndHoldInterval(1);
    window.view.resize(800, 600);
    for (const char *name : {"P2P", "Contacts", "New Channel", "New Group", "New channel"}) {
        QQuickItem *button = window.view.item("text", name);
        QVERIFY2(button, name);
        QTest::mouseMove(&window.view, ScreenWindow::middleOf(button));
        QQuickItem *tip = nullptr;
        QTRY_VERIFY2((tip = window.view.tip(name)), name);
        QTRY_VERIFY(QRectF(QPointF(), window.view.size()).contains(tip->mapRectToScene(tip->boundingRect())));
        window.view.takePicture(name);
    }
}

/// However quickly chats follow one another, and wherever their screens come to lie in memory.
void TestChatListScreen::whatIsWrittenStaysInItsChat() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(!window.list->isLoading);
    const auto input = [&] { return window.view.item("placeholderText", "Message..."); };
    for (int round = 0; round < 60; ++round) {
        const QString id = QString::number(1 + round % 6);
        window.list->selectedChatID = id;
        MessengerChatView *chat = window.list->openChat();
        QCOMPARE(chat->chat.id, id);
        QTRY_VERIFY(input() && input()->hasActiveFocus());
        QCOMPARE(input()->property("text").toString(), QString());
        // The history takes the place of what was there before it.
        QTRY_VERIFY(!chat->isLoading);
        window.view.type("here");
        QCOMPARE(chat->inputText.value(), "here");
        const int before = chat->messages.count();
        window.view.press(Qt::Key_Return);
        QCOMPARE(input()->property("text").toString(), QString());
        QTRY_COMPARE(chat->messages.count(), before + 1);
        QCOMPARE(chat->messages.at(before).content, "here");
        // Panels follow their chat too.
        chat->chatSummary = id + " in short";
        QTRY_VERIFY(window.view.item("text", id + " in short"));
    }
}

QTEST_MAIN(TestChatListScreen)
#include "tst_chat_list_screen.moc"

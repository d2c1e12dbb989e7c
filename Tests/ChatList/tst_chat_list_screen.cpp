#include "ChatList/MessengerChatListView.h"
#include "Support/KnownAddressBook.h"
#include "Support/OpenChatParts.h"
#include "Support/ScreenWindow.h"

#include <QRegularExpression>

using namespace orvane;

namespace {

const QString endless(10'000, u'W');
const QString german = QStringLiteral("Donaudampfschifffahrtsgesellschaftskapitänsmützenverwaltung");
const QString arabic = QStringLiteral("فريق التصميم والهندسة في المدينة الجديدة");

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
                           ScriptedAnswer::of(200, json::compact({{QLatin1String(key), records}})));
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
        for (const QString &text : {QStringLiteral("Short."), endless, arabic})
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
        view.open(QStringLiteral("qrc:/OrvaneTalk/ChatList/ChatListScreen.qml"),
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
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^(?!DelegateModel::cancel)")));
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
    list.togglePinned(QStringLiteral("4"));
    // Whatever came later, the list shows its beginning.
    QVERIFY(view.item("title", "Orvane AI")->mapToScene(QPointF()).y() > 100);
    QCOMPARE(drawn("list"), QStringList());
    list.selectedChatID = QStringLiteral("1");
    QTRY_VERIFY(view.item("placeholderText", "Message..."));
    QCOMPARE(drawn("chat"), QStringList());
    list.newGroup()->showNewGroup = true;
    QTRY_VERIFY(view.showsAnywhere("placeholderText", "Group name"));
    list.newGroup()->toggleParticipant(QStringLiteral("10"));
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
    list.searchText = QStringLiteral("ko");
    QTRY_VERIFY(view.item("text", "Search results"));
    QVERIFY(view.item("title", "Orvane AI")->mapToScene(QPointF()).y() > 100);
    QCOMPARE(drawn("search"), QStringList());
}

void TestChatListScreen::theMenuIsTheRowsOwn() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.rowOf("5"));
    const auto menuOf = [&window](const char *id) {
        window.rowOf(QLatin1String(id))->forceActiveFocus();
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
    menuOf("1");
    QTRY_VERIFY(window.view.showsAnywhere("text", "Pin"));
    QTRY_VERIFY(window.view.isSettled());
    window.view.click("Delete");
    QTRY_VERIFY(!window.list->chats.find("1"));
    QVERIFY(window.list->chats.find("5"));
}

void TestChatListScreen::aReusedRowIsThatOfItsChat() {
    Window window;
    QJsonArray many;
    for (int number = 0; number < 300; ++number)
        many.append(chatOf(QString::number(number), QStringLiteral("Chat %1").arg(number), "hi", number % 3,
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
        QVERIFY(findItem(row, "text", QStringLiteral("Chat %1").arg(top)));
        QCOMPARE(findItem(row, "text", "C") != nullptr, top % 2 == 1);
        QCOMPARE(findItem(row, "name", "person.3.fill") != nullptr, top % 2 == 0);
        QCOMPARE(findItem(row, "count", top % 3) != nullptr, top % 3 > 0);
    }
}

QTEST_MAIN(TestChatListScreen)
#include "tst_chat_list_screen.moc"

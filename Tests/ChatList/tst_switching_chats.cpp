// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"
#include "Support/KnownAddressBook.h"
#include "Support/OpenChatParts.h"
#include "Support/ScreenWindow.h"

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

constexpr int chats = 6;

/// The main screen in a window, with a few chats that have no messages.
struct Window : OpenChatParts {
    ContactImporter importer{std::make_unique<KnownAddressBook>(), api};
    std::shared_ptr<MessengerChatListView> list;
    ScreenWindow view;

    Window() {
        signIn();
        QJsonArray records;
        for (int number = 0; number < chats; ++number) {
            const QString id = QString::number(number);
            records.append(QJsonObject{{"id", id},
                                       {"type", "group"},
                                       {"title", "Group " + id},
                                       {"participants", QJsonArray{QJsonObject{{"user_id", 7}}}}});
            http.answerFor("/api/messenger/chats/" + id.toLatin1() + "/messages",
                           ScriptedAnswer::of(200, R"({"messages":[],"message":{}})"));
        }
        http.answerFor("/api/messenger/chats", ScriptedAnswer::of(200, json::compact({{"chats", records}})));
        list = std::make_shared<MessengerChatListView>(MessengerChatListView::Parts{
            chatParts(), session, [this]() -> ContactImporter & { return importer; }});
        view.resize(900, 700);
        view.open(u"qrc:/OrvaneTalk/ChatList/ChatListScreen.qml"_s,
                  {{"screen", QVariant::fromValue(list.get())}, {"focus", true}});
    }

    QQuickItem *input() const { return view.item("placeholderText", "Message..."); }
};

} // namespace

class TestSwitchingChats : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenStaysInItsChat();
};

/// However quickly chats follow one another, and wherever their screens come to lie in memory.
void TestSwitchingChats::whatIsWrittenStaysInItsChat() {
    Window window;
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(!window.list->isLoading);
    for (int round = 0; round < 60; ++round) {
        const QString id = QString::number(round % chats);
        window.list->selectedChatID = id;
        MessengerChatView *chat = window.list->openChat();
        QCOMPARE(chat->chat.id, id);
        QTRY_VERIFY(window.input() && window.input()->hasActiveFocus());
        QCOMPARE(window.input()->property("text").toString(), QString());
        // The history takes the place of what was there before it.
        QTRY_VERIFY(!chat->isLoading);
        window.view.type("here");
        QCOMPARE(chat->inputText.value(), "here");
        const int before = chat->messages.count();
        QTest::keyClick(&window.view, Qt::Key_Return);
        QCOMPARE(window.input()->property("text").toString(), QString());
        QTRY_COMPARE(chat->messages.count(), before + 1);
        QCOMPARE(chat->messages.at(before).content, "here");
        // Panels follow their chat too.
        chat->chatSummary = id + " in short";
        QTRY_VERIFY(window.view.item("text", id + " in short"));
    }
}

QTEST_MAIN(TestSwitchingChats)
#include "tst_switching_chats.moc"

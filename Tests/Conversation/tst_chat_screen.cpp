#include "Conversation/MessengerChatView.h"
#include "Interface/SymbolImages.h"
#include "Support/ClientParts.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

using namespace orvane;

namespace {

QQuickItem *find(QQuickItem *item, const char *property, const QVariant &value) {
    if (item->isVisible() && item->property(property) == value)
        return item;
    for (QQuickItem *child : item->childItems()) {
        if (QQuickItem *found = find(child, property, value))
            return found;
    }
    return nullptr;
}

/// The open chat in a window of its own, with a history that is given.
struct Window : ClientParts {
    std::shared_ptr<MessengerChatView> screen;
    QQuickView view;

    explicit Window(const QJsonArray &history) {
        MessengerChat chat;
        chat.id = QStringLiteral("c");
        chat.type = ChatType::group;
        chat.title = QStringLiteral("Team");
        http.answerFor("/api/messenger/chats/c/messages",
                       ScriptedAnswer::of(200, json::compact({{"messages", history}})));
        screen = std::make_shared<MessengerChatView>(chat, Contacts(), QStringLiteral("7"), api, socket);
        view.engine()->addImportPath("qrc:/");
        view.engine()->addImageProvider("symbol", new SymbolImages);
        view.setInitialProperties({{"screen", QVariant::fromValue(screen.get())}, {"focus", true}});
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        view.resize(580, 650);
        view.setSource(QUrl("qrc:/OrvaneTalk/Conversation/ChatScreen.qml"));
        view.show();
        view.requestActivate();
        screen->loadMessages();
    }

    QQuickItem *item(const char *property, const QVariant &value) {
        return find(view.rootObject(), property, value);
    }
    void type(const char *letters) {
        for (; *letters; ++letters)
            QTest::keyClick(&view, *letters);
    }

    QQuickItem *input() { return item("placeholderText", "Message..."); }
};

QJsonObject message(const QString &text) {
    return {{"id", "m"}, {"sender_id", "9"}, {"content", text}, {"created_at", 1'700'000'000}};
}

} // namespace

class TestChatScreen : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void enterSendsAndShiftEnterBreaksTheLine();
    void theInputGrowsToEightLinesAndShrinksAgain();
    void aMessageOfTenMegabytesIsShownInPieces();
    void markupIsShownAsItStands_data();
    void markupIsShownAsItStands();
};

void TestChatScreen::enterSendsAndShiftEnterBreaksTheLine() {
    Window window({});
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    // Opening a chat leaves the cursor in its input.
    QTRY_VERIFY(window.input() && window.input()->hasActiveFocus());
    QVERIFY(!window.item("text", "Send"));
    window.type("one");
    QVERIFY(window.item("text", "Send"));
    QTest::keyClick(&window.view, Qt::Key_Return, Qt::ShiftModifier);
    window.type("two");
    QTest::keyClick(&window.view, Qt::Key_Return);
    QCOMPARE(window.screen->messages.count(), 1);
    QCOMPARE(window.screen->messages.at(0).content, "one\ntwo");
    QCOMPARE(window.input()->property("text").toString(), QString());
    QTest::keyClick(&window.view, Qt::Key_Return);
    QCOMPARE(window.screen->messages.count(), 1);
}

void TestChatScreen::theInputGrowsToEightLinesAndShrinksAgain() {
    Window window({});
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.input());
    const auto height = [&] { return window.input()->parentItem()->parentItem()->height(); };
    const double oneLine = height();
    window.screen->inputText = "a\nb\nc";
    QTRY_VERIFY(height() > oneLine);
    window.screen->inputText = QString("line\n").repeated(7) + "line";
    QTRY_VERIFY(height() > 4 * oneLine - 100);
    const double eightLines = height();
    window.screen->inputText = QString("line\n").repeated(500);
    QTRY_COMPARE(window.input()->property("lineCount").toInt(), 501);
    QCOMPARE(height(), eightLines);
    window.screen->inputText = QString();
    QTRY_COMPARE(height(), oneLine);
}

void TestChatScreen::aMessageOfTenMegabytesIsShownInPieces() {
    Window window({message(QString(10'000'000, u'x'))});
    QVERIFY(QTest::qWaitForWindowExposed(&window.view));
    QQuickItem *more = nullptr;
    QTRY_VERIFY((more = window.item("text", "Show more")));
    QQuickItem *bubble = more->parentItem();
    const double before = bubble->height();
    QVERIFY(before < 100'000);
    more->forceActiveFocus();
    QTest::keyClick(&window.view, Qt::Key_Return);
    QTRY_VERIFY(bubble->height() > before);
    QCOMPARE(window.screen->messages.at(0).content.size(), 10'000'000);
}

void TestChatScreen::markupIsShownAsItStands_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("HTML") << "<b>bold</b> <img src='http://127.0.0.1:9/x'>";
    QTest::newRow("Markdown") << "**bold** [a](http://127.0.0.1:9)";
    QTest::newRow("entities") << "&lt;b&gt; &amp;";
}

void TestChatScreen::markupIsShownAsItStands() {
    QFETCH(QString, text);
    Window window({message(text)});
    QTRY_COMPARE(window.screen->messages.count(), 1);
    QTRY_VERIFY(window.item("text", text));
    QCOMPARE(window.item("text", text)->property("textFormat").toInt(), int(Qt::PlainText));
}

QTEST_MAIN(TestChatScreen)
#include "tst_chat_screen.moc"

#include "Conversation/MessengerChatView.h"
#include "Support/OpenChatParts.h"
#include "Support/ScreenWindow.h"

#include <QDesktopServices>
#include <QRegularExpression>
#include <QTest>

using namespace orvane;

namespace {

/// The open chat in a window of its own, with a history that is given.
struct Window : OpenChatParts {
    std::shared_ptr<MessengerChatView> screen;
    ScreenWindow view;

    explicit Window(const QJsonArray &history) {
        MessengerChat chat;
        chat.id = QStringLiteral("c");
        chat.type = ChatType::group;
        chat.title = QStringLiteral("Team");
        http.answerFor("/api/messenger/chats/c/messages",
                       ScriptedAnswer::of(200, json::compact({{"messages", history}})));
        screen = std::make_shared<MessengerChatView>(chat, Contacts(), QStringLiteral("7"), chatParts());
        view.resize(580, 650);
        view.open(QStringLiteral("qrc:/OrvaneTalk/Conversation/ChatScreen.qml"),
                  {{"screen", QVariant::fromValue(screen.get())}, {"focus", true}});
        screen->loadMessages();
    }

    QQuickItem *messages() const {
        return view.rootObject()->findChild<QQuickItem *>(QStringLiteral("messages"));
    }
    QQuickItem *row(int index) const {
        QQuickItem *row = nullptr;
        QMetaObject::invokeMethod(messages(), "itemAtIndex", Q_RETURN_ARG(QQuickItem *, row),
                                  Q_ARG(int, index));
        return row;
    }
    /// The end of the newest message stands at the end of the list.
    bool showsNewest() const {
        const QQuickItem *row = this->row(0);
        if (!row)
            return false;
        const double end = row->mapToItem(messages(), QPointF(0, row->height())).y();
        return end <= messages()->height() && end > messages()->height() - 32;
    }

    QQuickItem *input() const { return view.item("placeholderText", "Message..."); }
};

QJsonObject message(const QString &text) {
    return {{"id", "m"}, {"sender_id", "9"}, {"content", text}, {"created_at", 1'700'000'000}};
}

} // namespace

class TestChatScreen : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void opened(const QUrl &url) { m_opened.append(url.toString()); }

private Q_SLOTS:
    void enterSendsAndShiftEnterBreaksTheLine();
    void theInputGrowsToEightLinesAndShrinksAgain();
    void aMessageOfTenMegabytesIsShownInPieces();
    void markupIsShownAsItStands_data();
    void markupIsShownAsItStands();
    void theMenuOpensByKeyboard();
    void aLinkShowsWhereItLeadsAndOpensThere();
    void everyKindOfMessageIsDrawnInEveryTheme_data();
    void everyKindOfMessageIsDrawnInEveryTheme();

private:
    QStringList m_opened;
};

void TestChatScreen::enterSendsAndShiftEnterBreaksTheLine() {
    Window window({});
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(!window.screen->isLoading);
    // Opening a chat leaves the cursor in its input.
    QTRY_VERIFY(window.input() && window.input()->hasActiveFocus());
    QVERIFY(!window.view.item("text", "Send"));
    window.view.type("one");
    QVERIFY(window.view.item("text", "Send"));
    QTest::keyClick(&window.view, Qt::Key_Return, Qt::ShiftModifier);
    window.view.type("two");
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
    QTRY_VERIFY((more = window.view.item("text", "Show more")));
    // The button stands in its loader.
    QQuickItem *bubble = more->parentItem()->parentItem();
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
    QTRY_VERIFY(window.view.item("text", text));
    QCOMPARE(window.view.item("text", text)->property("textFormat").toInt(), int(Qt::PlainText));
}

void TestChatScreen::theMenuOpensByKeyboard() {
    Window window({message(QStringLiteral("hi"))});
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.view.item("text", "hi"));
    QVERIFY(window.messages());
    window.messages()->forceActiveFocus();
    QTest::keyClick(&window.view, Qt::Key_F10, Qt::ShiftModifier);
    QTRY_VERIFY(window.view.showsAnywhere("text", "Reply"));
    QTest::keyClick(&window.view, Qt::Key_Escape);
    QTRY_VERIFY(!window.view.showsAnywhere("text", "Reply"));
    QTRY_VERIFY(window.messages()->hasActiveFocus());
    // What an entry opens gives the focus back just as well.
    QTest::keyClick(&window.view, Qt::Key_F10, Qt::ShiftModifier);
    QTRY_VERIFY(window.view.showsAnywhere("text", "Forward"));
    window.view.click("Forward");
    QTRY_VERIFY(window.screen->showForwardPicker);
    QTRY_VERIFY(!window.messages()->hasActiveFocus());
    QTest::keyClick(&window.view, Qt::Key_Escape);
    QTRY_VERIFY(!window.screen->showForwardPicker);
    QTRY_VERIFY(window.messages()->hasActiveFocus());
}

void TestChatScreen::aLinkShowsWhereItLeadsAndOpensThere() {
    QDesktopServices::setUrlHandler("https", this, "opened");
    const QString text("https://a.example/long/way and words\n<b>https://b.example</b>");
    Window window({message(text)});
    QVERIFY(QTest::qWaitForWindowActive(&window.view));
    QTRY_VERIFY(window.view.item("text", text));
    QQuickItem *content = findItem(window.view.item("text", text), "readOnly", true);
    QVERIFY(content);
    const auto at = [&](double x) {
        const QPointF place(x, content->property("font").value<QFont>().pixelSize() / 2.0);
        return content->mapToScene(place).toPoint();
    };
    // Beside the link there is nothing to see or to press.
    QTest::mouseMove(&window.view, at(content->width() - 3));
    QTest::mouseClick(&window.view, Qt::LeftButton, {}, at(content->width() - 3));
    QVERIFY(!window.view.item("text", "https://a.example/long/way"));
    QTest::mouseMove(&window.view, at(40));
    QTRY_VERIFY(window.view.item("text", "https://a.example/long/way"));
    window.view.takePicture("link");
    QTest::mouseClick(&window.view, Qt::LeftButton, {}, at(40));
    QTRY_COMPARE(m_opened, QStringList{"https://a.example/long/way"});
    window.messages()->forceActiveFocus();
    QTest::keyClick(&window.view, Qt::Key_F10, Qt::ShiftModifier);
    QTRY_VERIFY(window.view.showsAnywhere("text", "Open https://b.example"));
    QTRY_VERIFY(window.view.isSettled());
    window.view.takePicture("menu");
    QTest::keyClick(&window.view, Qt::Key_Down);
    QTest::keyClick(&window.view, Qt::Key_Down);
    QTest::keyClick(&window.view, Qt::Key_Return);
    QTRY_COMPARE(m_opened.value(1), "https://b.example");
    QDesktopServices::unsetUrlHandler("https");
}

void TestChatScreen::everyKindOfMessageIsDrawnInEveryTheme_data() {
    QTest::addColumn<int>("theme");
    QTest::addColumn<QSize>("size");
    for (const OrvaneTheme theme : allThemes()) {
        QTest::addRow("%s, narrow", qUtf8Printable(rawValue(theme))) << int(theme) << QSize(480, 600);
        QTest::addRow("%s, wide", qUtf8Printable(rawValue(theme))) << int(theme) << QSize(2240, 1440);
    }
}

void TestChatScreen::everyKindOfMessageIsDrawnInEveryTheme() {
    QFETCH(int, theme);
    QFETCH(QSize, size);
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
    Window window({message(QStringLiteral("Wollen wir Donaudampfschifffahrtsgesellschaftskapitäne einladen? "
                                          "https://fahrt.example/plan?tag=1")),
                   message(QStringLiteral("مرحبا، כן — 👩‍👩‍👧 да"))});
    window.view.use(OrvaneTheme(theme));
    window.view.resize(size);
    QVERIFY(QTest::qWaitForWindowExposed(&window.view));
    MessengerChatView &screen = *window.screen;
    QTRY_VERIFY(!screen.isLoading);
    const auto add = [&](MessageType type, const QString &content, DeliveryStatus status,
                         const auto &change) {
        MessengerMessage record;
        record.id = QString::number(screen.messages.count());
        record.senderID = QStringLiteral("7");
        record.type = type;
        record.content = content;
        record.timestamp = QDateTime::currentDateTimeUtc().addSecs(-60);
        record.deliveryStatus = status;
        change(record);
        screen.messages.append(record);
    };
    const auto asItIs = [](MessengerMessage &) {};
    add(MessageType::text, QStringLiteral("on its way"), DeliveryStatus::sending, asItIs);
    add(MessageType::text, QStringLiteral("read"), DeliveryStatus::read, [](MessengerMessage &record) {
        record.replyToID = QStringLiteral("m");
        record.editedAt = record.timestamp;
        record.isStarred = true;
        record.reactions = {{QStringLiteral("🔥"), {"7", "9"}}, {QStringLiteral("👏"), {"9"}}};
    });
    add(MessageType::text, QStringLiteral("failed: https://a.example/x"), DeliveryStatus::failed,
        [](MessengerMessage &record) {
            record.forwardedFrom =
                ForwardInfo{QStringLiteral("d"), QStringLiteral("9"), QStringLiteral("Ben"), {}};
        });
    add(MessageType::sticker, QStringLiteral("😍"), DeliveryStatus::sent, asItIs);
    add(MessageType::poll, QStringLiteral("Tea?"), DeliveryStatus::sent, [](MessengerMessage &record) {
        record.poll = MessengerPoll{QStringLiteral("p"),
                                    QStringLiteral("c"),
                                    QStringLiteral("7"),
                                    QStringLiteral("Tea?"),
                                    {PollOption{QStringLiteral("a"), QStringLiteral("Yes"), {"7", "9"}},
                                     PollOption{QStringLiteral("b"), QStringLiteral("No"), {"5"}}},
                                    true,
                                    false,
                                    {}};
    });
    screen.translatedText = QVariantMap{{QStringLiteral("2"), QStringLiteral("в пути")}};
    screen.pinnedMessageIDs = QSet<QString>{QStringLiteral("2")};
    screen.chatContext = QStringLiteral("Последние сообщения: Я: read");
    screen.unansweredQuestions = QStringList{QStringLiteral("Wollen wir?")};
    screen.chatSummary = QStringLiteral("Tea at five.\n\n• a\n• b");
    screen.smartReplies = QStringList{QStringLiteral("Yes"), QStringLiteral("No"), QStringLiteral("Later")};
    screen.personaSamples = 12;
    screen.typingUserIDs = QSet<QString>{QStringLiteral("9")};
    screen.replyTo(screen.messages.at(0));
    screen.agentResults = QStringList{QStringLiteral("a hit")};
    screen.showSearchPanel = true;
    screen.showAIPanel = true;
    screen.aiResponse = QStringLiteral("Searching.");
    QTRY_VERIFY(window.view.item("text", "Searching."));
    QTRY_VERIFY(window.showsNewest());
    window.view.takePicture();
    screen.showAIPanel = false;
    screen.showSearchPanel = false;
    screen.closeContext();
    screen.closeSummary();
    screen.showStickerPicker = true;
    QTRY_VERIFY(window.view.item("placeholderText", "Поиск стикеров..."));
    QTRY_VERIFY(window.showsNewest());
    window.view.takePicture();
    screen.showStickerPicker = false;
    QTRY_VERIFY(!window.view.item("placeholderText", "Поиск стикеров..."));
    QTRY_VERIFY(window.showsNewest());
}

QTEST_MAIN(TestChatScreen)
#include "tst_chat_screen.moc"

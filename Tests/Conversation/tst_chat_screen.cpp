// SPDX-License-Identifier: MIT
#include "Conversation/ChatWindow.h"
#include "Interface/DisplayTimes.h"
#include "Support/InRow.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QJsonObject message(const QString &text) {
    return {{"id", "m"}, {"sender_id", "9"}, {"content", text}, {"created_at", 1'700'000'000}};
}

} // namespace

class TestChatScreen : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void opened(const QUrl &url) { m_opened.append(url.toString()); }

private Q_SLOTS:
    void enterSendsAndShiftEnterBreaksTheLine() {
        ChatWindow window({});
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

    void theInputGrowsToEightLinesAndShrinksAgain() {
        ChatWindow window({});
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

    void aMessageOfTenMegabytesIsShownInPieces() {
        ChatWindow window({message(QString(10'000'000, u'x'))});
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

    void markupIsShownAsItStands() {
        const QStringList texts{u"<b>bold</b> <img src='http://127.0.0.1:9/x'>"_s,
                                u"**bold** [a](http://127.0.0.1:9)"_s, u"&lt;b&gt; &amp;"_s};
        const ChatWindow window({message(texts.at(0)), message(texts.at(1)), message(texts.at(2))});
        for (const QString &text : texts) {
            const InRow row(text.toUtf8());
            QTRY_VERIFY(window.view.item("text", text));
            QCOMPARE(window.view.item("text", text)->property("textFormat").toInt(), int(Qt::PlainText));
        }
    }

    void theMenuOpensByKeyboard() {
        ChatWindow window({message(u"hi"_s)});
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

    void aLinkShowsWhereItLeadsAndOpensThere() {
        QDesktopServices::setUrlHandler("https", this, "opened");
        const QString text("https://a.example/long/way and words\n<b>https://b.example</b>");
        ChatWindow window({message(text)});
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
        QVERIFY(!window.view.tip("https://a.example/long/way"));
        QTest::mouseMove(&window.view, at(40));
        QTRY_VERIFY(window.view.tip("https://a.example/long/way"));
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

    void onlyRowsNearTheViewAreMade() {
        ChatWindow window({});
        window.addNumbers(10'000);
        QTRY_VERIFY(window.showsNewest());
        const auto made = [&] { return window.rows().size(); };
        QVERIFY(made() > 5);
        QVERIFY(made() < 100);
        for (int page = 0; page < 50; ++page) {
            window.messages()->setProperty("contentY",
                                           window.messages()->property("contentY").toDouble() - 500);
            QCoreApplication::processEvents();
        }
        QVERIFY(made() < 150);
    }

    void nothingInSightMovesWhileRowsComeIn() {
        ChatWindow window({});
        // A glide would go on below the steps that are taken here.
        window.view.tokens()->setProperty("reducedMotion", true);
        for (int number = 0; number < 300; ++number)
            window.add(QString("line\n").repeated(number * 7 % 13) + QString::number(number));
        // What the arrivals still have the list do later would take the first step back.
        window.view.grabWindow();
        QCoreApplication::processEvents();
        QTRY_VERIFY(window.showsNewest());
        QQuickItem *list = window.messages();
        for (int step = 0; step < 200; ++step) {
            QQuickItem *row = nullptr;
            QMetaObject::invokeMethod(list, "itemAt", Q_RETURN_ARG(QQuickItem *, row), Q_ARG(double, 100),
                                      Q_ARG(double, list->property("contentY").toDouble() + 200));
            QVERIFY(row);
            const double before = row->mapToItem(list, QPointF()).y();
            list->setProperty("contentY", list->property("contentY").toDouble() - 37);
            QCoreApplication::processEvents();
            QCOMPARE(row->mapToItem(list, QPointF()).y(), before + 37);
        }
        // A message that is received is what the person is brought to.
        window.add(u"new"_s);
        QTRY_VERIFY(window.showsNewest());
    }

    void theNewestStaysInSightWhileStripsComeAndGo() {
        QJsonArray history;
        for (int number = 0; number < 50; ++number)
            history.append(message(u"words of an ordinary length 🙂 "_s.repeated(1 + number * 7 % 9)));
        // One comes before the history, others after it.
        ChatWindow window(history,
                          [](MessengerChatView &screen) { screen.smartReplies = QStringList{u"Yes"_s}; });
        MessengerChatView &screen = *window.screen;
        screen.chatContext = u"context"_s;
        window.view.grabWindow();
        QTRY_VERIFY(window.showsNewest());
        screen.smartReplies = QStringList();
        screen.chatSummary = u"in short"_s;
        window.view.grabWindow();
        QTRY_VERIFY(window.showsNewest());
        window.view.resize(500, 500);
        QTRY_VERIFY(window.messages()->height() < 400);
        window.view.grabWindow();
        QTRY_VERIFY(window.showsNewest());
    }

    void aRunOfLiveMessagesHasOneTail() {
        ChatWindow window({});
        window.addNumbers(3, u"9"_s);
        QTRY_COMPARE(window.rows().size(), 3);
        int tails = 0;
        for (const QQuickItem *row : window.rows())
            tails += row->property("endsRun").toBool() ? 1 : 0;
        QCOMPARE(tails, 1);
        // The avatar stands at the one row that ends the run.
        for (QQuickItem *row : window.rows())
            QCOMPARE(findItem(row, "hueId", "9") != nullptr, row->property("endsRun").toBool());
    }

    void keysWalkTheMessages() {
        ChatWindow window({});
        window.addNumbers(60);
        QTRY_VERIFY(window.showsNewest());
        window.messages()->forceActiveFocus();
        const auto current = [&] { return window.messages()->property("currentIndex").toInt(); };
        const auto press = [&](Qt::Key key) {
            QTest::keyClick(&window.view, key);
            return current();
        };
        QCOMPARE(current(), 0);
        QVERIFY(window.row(0)->property("focused").toBool());
        QCOMPARE(press(Qt::Key_Down), 0);
        QCOMPARE(press(Qt::Key_Up), 1);
        QCOMPARE(press(Qt::Key_Home), 59);
        QVERIFY(window.row(59)->property("focused").toBool());
        QVERIFY(window.row(59)->mapToItem(window.messages(), QPointF()).y() >= 0);
        const int lower = press(Qt::Key_PageDown);
        QVERIFY(lower < 55);
        QCOMPARE(press(Qt::Key_PageUp), 59);
        QCOMPARE(press(Qt::Key_End), 0);
        QVERIFY(window.showsNewest());
        QCOMPARE(press(Qt::Key_Escape), -1);
        QVERIFY(window.input()->hasActiveFocus());
    }

    void tabWalksOnFromTheInput() {
        ChatWindow window({message(u"hi"_s)});
        QTRY_VERIFY(window.input() && window.input()->hasActiveFocus());
        QTRY_VERIFY(window.view.item("text", "hi"));
        const auto focused = [&] { return window.view.activeFocusItem()->property("text").toString(); };
        window.view.type("x");
        QStringList walked;
        for (int step = 0; step < 2; ++step) {
            QTest::keyClick(&window.view, Qt::Key_Tab);
            walked.append(focused());
        }
        QCOMPARE(walked, (QStringList{"Send", "AI"}));
        QCOMPARE(window.screen->inputText.value(), "x");
        for (int step = 0; step < 3; ++step)
            QTest::keyClick(&window.view, Qt::Key_Backtab);
        QCOMPARE(focused(), "Poll");
    }

    void aClickOnAMessageLeadsToTheInput() {
        ChatWindow window({message(u"hi there"_s)});
        QTRY_VERIFY(window.view.item("text", "hi there"));
        QTRY_VERIFY(window.showsNewest());
        const auto leave = [&] { window.view.item("text", "AI")->forceActiveFocus(); };
        leave();
        window.view.click("hi there");
        QTRY_VERIFY(window.input()->hasActiveFocus());
        leave();
        QQuickItem *text = window.view.item("text", "hi there");
        QTest::mouseClick(&window.view, Qt::RightButton, {},
                          text->mapToScene(text->boundingRect().center()).toPoint());
        QTRY_VERIFY(window.view.showsAnywhere("text", "Star"));
        QTRY_VERIFY(window.view.isSettled());
        window.view.click("Star");
        QTRY_VERIFY(window.screen->messages.at(0).isStarred);
        QTRY_VERIFY(window.input()->hasActiveFocus());
    }

    void whatIsSelectedInAMessageIsCopiedFromTheInput() {
        ChatWindow window({message(u"copy me"_s)});
        QTRY_VERIFY(window.view.item("text", "copy me"));
        QTRY_VERIFY(window.showsNewest());
        QQuickItem *content = findItem(window.messages(), "readOnly", true);
        QVERIFY(content);
        const QPoint start = content->mapToScene(QPointF(1, 8)).toPoint();
        const QPoint end = content->mapToScene(QPointF(content->width() + 4, 8)).toPoint();
        QTest::mousePress(&window.view, Qt::LeftButton, {}, start);
        QTest::mouseMove(&window.view, (start + end) / 2);
        QTest::mouseMove(&window.view, end);
        QTest::mouseRelease(&window.view, Qt::LeftButton, {}, end);
        QTRY_COMPARE(content->property("selectedText").toString(), "copy me");
        QGuiApplication::clipboard()->clear();
        window.input()->forceActiveFocus();
        QTest::keySequence(&window.view, QKeySequence::Copy);
        QTRY_COMPARE(QGuiApplication::clipboard()->text(), "copy me");
        // What is selected in the input itself goes first.
        window.view.type("abc");
        QTest::keySequence(&window.view, QKeySequence::SelectAll);
        QTest::keySequence(&window.view, QKeySequence::Copy);
        QTRY_COMPARE(QGuiApplication::clipboard()->text(), "abc");
    }

    void aPasteThatIsTooLongIsCutAndSaidToBe() {
        constexpr int most = 65'536;
        ChatWindow window({});
        QTRY_VERIFY(window.input() && window.input()->hasActiveFocus());
        const QString notice = u"A message holds 65536 characters. What is beyond that was left out."_s;
        // The last place lies in the middle of an emoji.
        QGuiApplication::clipboard()->setText(u"words and more 😀 "_s.repeated(50'000));
        QTest::keySequence(&window.view, QKeySequence::Paste);
        QCOMPARE(window.screen->inputText.value().size(), most - 1);
        QVERIFY(window.screen->inputText.value().endsWith(u"more "));
        QTRY_VERIFY(window.view.item("text", notice));
        QTest::keySequence(&window.view, QKeySequence::SelectAll);
        QGuiApplication::clipboard()->setText(u"short"_s);
        QTest::keySequence(&window.view, QKeySequence::Paste);
        QCOMPARE(window.screen->inputText.value(), "short");
        QTRY_VERIFY(!window.view.item("text", notice));
        // A text that just fits leaves nothing out; one more letter does not.
        QTest::keySequence(&window.view, QKeySequence::SelectAll);
        QGuiApplication::clipboard()->setText(QString(most, u'x'));
        QTest::keySequence(&window.view, QKeySequence::Paste);
        QCOMPARE(window.screen->inputText.value().size(), most);
        QVERIFY(!window.view.item("text", notice));
        window.view.type("y");
        QCOMPARE(window.screen->inputText.value().size(), most);
        QTRY_VERIFY(window.view.item("text", notice));
        QTest::keyClick(&window.view, Qt::Key_Backspace);
        QTRY_VERIFY(!window.view.item("text", notice));
        window.screen->inputText = QString(most, u'z');
        QVERIFY(!window.view.item("text", notice));
        // An offered reply comes from a server.
        window.screen->inputText = u"words "_s.repeated(200'000);
        QTRY_COMPARE(window.screen->inputText.value().size(), most);
        QTRY_VERIFY(window.view.item("text", notice));
    }

    void anEditKeepsItsLines() {
        ChatWindow window({});
        window.add(u"one\ntwo\nthree"_s);
        window.screen->editLastOwnMessage();
        QQuickItem *field = nullptr;
        QTRY_VERIFY((field = findItem(window.view.contentItem(), "placeholderText", "Message")));
        QTRY_VERIFY(field->hasActiveFocus());
        QCOMPARE(field->property("lineCount").toInt(), 3);
        QVERIFY(field->parentItem()->parentItem()->height() >= field->property("contentHeight").toDouble());
        window.view.takePicture("edit");
        window.view.type("!");
        QTest::keyClick(&window.view, Qt::Key_Return);
        QTRY_VERIFY(!window.screen->showEditAlert);
        QTRY_COMPARE(window.http.requests().last().body, R"({"content":"one\ntwo\nthree!","user_id":7})");
    }

    void enterDeletesNothing() {
        ChatWindow window({});
        window.add(u"keep me"_s);
        window.screen->deleteMessage(window.screen->messages.at(0));
        QTRY_VERIFY(window.view.showsAnywhere("text", "This action cannot be undone."));
        QTRY_VERIFY(window.view.isSettled());
        window.view.takePicture("delete");
        const auto asked = window.http.requests().size();
        QTest::keyClick(&window.view, Qt::Key_Return);
        QTRY_VERIFY(!window.screen->deletingMessage.value());
        QCOMPARE(window.http.requests().size(), asked);
        QTRY_VERIFY(window.input()->hasActiveFocus());
    }

    void theFullTimeIsInsideTheWindow() {
        ChatWindow window({});
        window.addNumbers(30, u"9"_s);
        QTRY_VERIFY(window.showsNewest());
        // The row that the upper edge of the list cuts, and whose time stands just below that.
        window.messages()->setProperty("contentY", window.messages()->property("contentY").toDouble() - 300);
        window.view.grabWindow();
        for (QQuickItem *row : window.rows()) {
            const QString full = DisplayTimes::full(row->property("timestamp").toDateTime());
            QQuickItem *clock =
                findItem(row, "text", DisplayTimes::clock(row->property("timestamp").toDateTime()));
            const QPoint middle = window.view.middleOf(clock);
            if (!window.messages()->contains(window.messages()->mapFromScene(middle)))
                continue;
            QTest::mouseMove(&window.view, middle);
            QTRY_VERIFY(window.view.tip(full));
            const QQuickItem *tip = window.view.tip(full);
            const QRectF place = tip->mapRectToScene(QRectF(0, 0, tip->width(), tip->height()));
            QVERIFY(QRectF(QPointF(), window.view.size()).contains(place));
            QTest::mouseMove(&window.view, QPoint(1, 1));
            QTRY_VERIFY(!window.view.tip(full));
        }
    }

    void marksStayInTheirBubble() {
        ChatWindow window({});
        window.view.tokens()->setProperty("reducedMotion", true);
        window.add(u"a"_s + u"\u0301"_s.repeated(300), u"7"_s);
        QTRY_VERIFY(window.showsNewest());
        const QPointF top = window.row(0)->mapToItem(window.view.contentItem(), QPointF());
        const QImage picture = window.view.grabWindow();
        for (int y = int(window.messages()->mapToScene(QPointF()).y()); y < int(top.y()) - 4; ++y)
            for (int x = picture.width() / 2; x < picture.width() - 12; ++x)
                QCOMPARE(picture.pixelColor(x, y), window.view.color());
    }

    void whatWasFoldedUnfolds() {
        ChatWindow window({});
        window.screen->chatContext = QString("A line of context.\n").repeated(12);
        QQuickItem *button = nullptr;
        QTRY_VERIFY((button = window.view.item("text", "Show all")));
        const QQuickItem *text = button->parentItem()->childItems().first();
        QCOMPARE(text->property("lineCount").toInt(), 3);
        // A frame puts everything in its place.
        window.view.grabWindow();
        window.view.click("Show all");
        QTRY_VERIFY(text->property("lineCount").toInt() >= 12);
        QTRY_VERIFY(window.view.item("text", "Show less"));
    }

    void everyKindOfMessageIsDrawnInEveryTheme_data() {
        QTest::addColumn<int>("theme");
        QTest::addColumn<QSize>("size");
        for (const OrvaneTheme theme : allThemes()) {
            QTest::addRow("%s, narrow", qUtf8Printable(rawValue(theme))) << int(theme) << QSize(480, 600);
            QTest::addRow("%s, wide", qUtf8Printable(rawValue(theme))) << int(theme) << QSize(2240, 1440);
        }
    }

    void everyKindOfMessageIsDrawnInEveryTheme() {
        QFETCH(int, theme);
        QFETCH(QSize, size);
        QTest::failOnWarning(QRegularExpression(u"."_s));
        ChatWindow window({message(u"Wollen wir Donaudampfschifffahrtsgesellschaftskapitäne einladen? "
                                   "https://fahrt.example/plan?tag=1"_s),
                           message(u"مرحبا، כן — 👩‍👩‍👧 да"_s)});
        window.view.use(OrvaneTheme(theme));
        window.view.resize(size);
        MessengerChatView &screen = *window.screen;
        const auto add = [&](MessageType type, const QString &content, DeliveryStatus status,
                             const auto &change) {
            MessengerMessage record;
            record.id = QString::number(screen.messages.count());
            record.senderID = u"7"_s;
            record.type = type;
            record.content = content;
            record.timestamp = QDateTime::currentDateTimeUtc().addSecs(-60);
            record.deliveryStatus = status;
            change(record);
            screen.messages.append(record);
        };
        const auto asItIs = [](MessengerMessage &) {};
        add(MessageType::text, u"on its way"_s, DeliveryStatus::sending, asItIs);
        add(MessageType::text, u"read"_s, DeliveryStatus::read, [](MessengerMessage &record) {
            record.replyToID = u"m"_s;
            record.editedAt = record.timestamp;
            record.isStarred = true;
            record.reactions = {{u"🔥"_s, {"7", "9"}}, {u"👏"_s, {"9"}}};
        });
        add(MessageType::text, u"failed: https://a.example/x"_s, DeliveryStatus::failed,
            [](MessengerMessage &record) {
                record.forwardedFrom = ForwardInfo{u"d"_s, u"9"_s, u"Ben"_s, {}};
            });
        add(MessageType::sticker, u"😍"_s, DeliveryStatus::sent, asItIs);
        add(MessageType::poll, u"Tea?"_s, DeliveryStatus::sent, [](MessengerMessage &record) {
            record.poll =
                MessengerPoll{u"p"_s,
                              u"c"_s,
                              u"7"_s,
                              u"Tea?"_s,
                              {PollOption{u"a"_s, u"Yes"_s, {"7", "9"}}, PollOption{u"b"_s, u"No"_s, {"5"}}},
                              true,
                              false,
                              {}};
        });
        screen.translatedText = QVariantMap{{u"2"_s, u"в пути"_s}};
        screen.pinnedMessageIDs = QSet<QString>{u"2"_s};
        screen.chatContext = u"Последние сообщения: Я: read"_s;
        screen.unansweredQuestions = QStringList{u"Wollen wir?"_s};
        screen.chatSummary = u"Tea at five.\n\n• a\n• b"_s;
        screen.smartReplies = QStringList{u"Yes"_s, u"No"_s, u"Later"_s};
        screen.personaSamples = 12;
        screen.typingUserIDs = QSet<QString>{u"9"_s};
        screen.replyTo(screen.messages.at(0));
        screen.agentResults = QStringList{u"a hit"_s};
        screen.showSearchPanel = true;
        screen.showAIPanel = true;
        screen.aiResponse = u"Searching."_s;
        QTRY_VERIFY(window.view.item("text", "Searching."));
        QTRY_VERIFY(window.showsNewest());
        window.view.takePicture();
        screen.showAIPanel = false;
        screen.showSearchPanel = false;
        screen.assistant()->closeContext();
        screen.assistant()->closeSummary();
        screen.showStickerPicker = true;
        QTRY_VERIFY(window.view.item("placeholderText", "Поиск стикеров..."));
        QTRY_VERIFY(window.showsNewest());
        window.view.takePicture();
        screen.showStickerPicker = false;
        QTRY_VERIFY(!window.view.item("placeholderText", "Поиск стикеров..."));
        QTRY_VERIFY(window.showsNewest());
    }

private:
    QStringList m_opened;
};

QTEST_MAIN(TestChatScreen)
#include "tst_chat_screen.moc"

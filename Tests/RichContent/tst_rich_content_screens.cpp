// SPDX-License-Identifier: MIT
#include "Model/MessengerPoll.h"
#include "Support/ScreenWindow.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

struct Window : ScreenWindow {
    explicit Window(const QByteArray &lines, const QVariantMap &properties = {}) {
        resize(500, 640);
        openLines("import OrvaneTalk.RichContent\n" + lines, properties);
    }

    /// In the screen, or over it.
    QQuickItem *item(const char *property, const QVariant &value) const {
        return findItem(contentItem(), property, value);
    }
    QString focused() const { return activeFocusItem()->property("text").toString(); }
    void click(QQuickItem *target) { QTest::mouseClick(this, Qt::LeftButton, {}, middleOf(target)); }
};

MessengerPoll twoOptions() {
    MessengerPoll poll;
    poll.question = "<b>Tea?</b>";
    PollOption yes;
    yes.id = "y";
    yes.text = "Yes";
    yes.voters = {"8", "9", "10"};
    PollOption no = yes;
    no.id = "n";
    no.text = "No";
    no.voters = {};
    poll.options = {yes, no};
    return poll;
}

} // namespace

class TestRichContentScreens : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void resultsShowOnceThePersonHasVoted() {
        Window window("PollCard { currentUserID: '7'; onVote: changed => { poll = changed } }",
                      {{"poll", QVariant::fromValue(twoOptions())}});
        QVERIFY(window.item("text", "3 голосов"));
        QVERIFY(window.item("text", "<b>Tea?</b>"));
        QQuickItem *yes = window.item("votes", 3);
        QQuickItem *no = window.item("votes", 0);
        const auto bar = [](QQuickItem *row) { return row->findChild<QQuickItem *>("bar")->width(); };
        QCOMPARE(bar(yes), 0.0);
        QVERIFY(!findItem(yes, "text", "3"));
        window.press(Qt::Key_Tab);
        window.press(Qt::Key_Tab);
        QVERIFY(no->hasActiveFocus());
        window.press(Qt::Key_Space);
        QVERIFY(window.item("text", "4 голосов"));
        QCOMPARE(bar(yes), yes->width() * 3 / 4);
        QCOMPARE(bar(no), no->width() / 4);
        QVERIFY(findItem(yes, "text", "3") && findItem(no, "text", "1"));
        QVERIFY(no->hasActiveFocus() && no->property("isSelected").toBool());
        window.click(yes);
        QVERIFY(yes->property("isSelected").toBool() && !no->property("isSelected").toBool());
        window.click(yes);
        QVERIFY(window.item("text", "3 голосов"));
        QCOMPARE(bar(yes), 0.0);
    }

    void aPollIsWrittenWithTheKeyboard() {
        Window window("Item { id: root; property var poll; property bool shown: false\n"
                      "SheetLoader { shown: root.shown; sourceComponent: PollCreatorSheet { chatID: 'c'; "
                      "currentUserID: '7'\n"
                      "onCreated: poll => { root.poll = poll } onClosed: root.shown = false } } }");
        QQuickItem *root = window.rootObject();
        root->setProperty("shown", true);
        QTRY_VERIFY(window.item("text", "Создать"));
        QVERIFY(!window.item("text", "Создать")->isEnabled());
        QVERIFY(!window.item("text", "Удалить вариант 1"));
        window.type("Tea?");
        window.press(Qt::Key_Return);
        window.type("Yes");
        window.press(Qt::Key_Return);
        window.type("No");
        QCOMPARE(window.focused(), "No");
        QVERIFY(window.item("text", "Создать")->isEnabled());
        // Esc would lose what was typed.
        window.press(Qt::Key_Escape);
        QVERIFY(root->property("shown").toBool());
        for (int count = 3; count <= 10; ++count) {
            QQuickItem *add = window.item("text", "Добавить вариант");
            QVERIFY(add);
            add->forceActiveFocus();
            window.press(Qt::Key_Return);
            window.type(count == 3 ? "Maybe" : "x");
            QVERIFY(window.item("placeholderText", u"Вариант %1"_s.arg(count)));
        }
        QVERIFY(!window.item("text", "Добавить вариант"));
        // What stands in the rows moves up, and the focus goes where the row was.
        window.item("text", "Удалить вариант 1")->forceActiveFocus();
        window.press(Qt::Key_Space);
        QCOMPARE(window.focused(), "No");
        window.item("text", "Несколько ответов")->forceActiveFocus();
        window.press(Qt::Key_Space);
        window.item("text", "Создать")->forceActiveFocus();
        window.press(Qt::Key_Return);
        QTRY_VERIFY(!root->property("shown").toBool());
        const auto poll = root->property("poll").value<MessengerPoll>();
        QCOMPARE(poll.question, "Tea?");
        QCOMPARE(poll.options.size(), 9);
        QCOMPARE(poll.options.at(1).text, "Maybe");
        QVERIFY(poll.isMultipleChoice);
    }

    void aStickerIsFoundAndChosen() {
        Window window("StickerPicker { property var chosen: []; focus: true; onSelect: emoji => { chosen = "
                      "chosen.concat([emoji]) } }");
        const auto chosen = [&window] { return window.rootObject()->property("chosen").toStringList(); };
        QTRY_VERIFY(window.item("text", "😂"));
        window.type("heart");
        QTRY_VERIFY(window.item("text", "😻") && !window.item("text", "🤔"));
        window.press(Qt::Key_Down);
        window.press(Qt::Key_Return);
        QCOMPARE(chosen(), QStringList{"😻"});
        window.click(window.item("text", "🐶"));
        QCOMPARE(window.item("placeholderText", "Поиск стикеров...")->property("text").toString(), "");
        QTRY_VERIFY(window.item("text", "🦴"));
        window.click(window.item("text", "🦴"));
        QCOMPARE(chosen(), (QStringList{"😻", "🦴"}));
    }
};

QTEST_MAIN(TestRichContentScreens)
#include "tst_rich_content_screens.moc"

// SPDX-License-Identifier: MIT
#include "Support/InRow.h"
#include "Support/ScreenWindow.h"

#include <QStyleHints>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

const QString press = QAccessibleActionInterface::pressAction();
const QString toggle = QAccessibleActionInterface::toggleAction();

/// A control that takes its state from a model, and says to it what was done. The model is `value`, and
/// `times` counts what it was told.
QByteArray boundTo(const QByteArray &control) {
    return "Item { id: model; property bool value: false; property int times: 0\n"
           "Column { anchors.centerIn: parent\n" +
           control + "} }";
}

const QByteArray switchLines = boundTo(
    "SwitchRow { text: 'It'; checked: model.value; onToggled: { model.value = checked; ++model.times } }");
const QByteArray chipLines =
    boundTo("Chip { text: 'It'; checked: model.value; onClicked: { model.value = true; ++model.times } }");

struct Window : ScreenWindow {
    explicit Window(const QByteArray &lines, const QSize &size = {400, 400}) {
        resize(size);
        openLines(lines);
    }
};

} // namespace

class TestControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QGuiApplication::styleHints()->setMousePressAndHoldInterval(1); }

    void whateverTogglesEndsInTheModel() {
        const auto check = [](const QByteArray &lines, const QString &way) {
            IN_ROW(lines.sliced(lines.indexOf("Column")) + way.toUtf8());
            Window view(lines);
            QObject *model = view.rootObject();
            QQuickItem *control = view.item("text", "It");
            const auto act = [&] {
                control->forceActiveFocus();
                if (way == "pointer")
                    view.click("It");
                else if (way == "Space")
                    view.press(Qt::Key_Space);
                else if (way == "Return")
                    view.press(Qt::Key_Return);
                else
                    QVERIFY(view.act("It", way));
            };
            act();
            QCOMPARE(model->property("times").toInt(), 1);
            QVERIFY(model->property("value").toBool() && control->property("checked").toBool());
            QVERIFY(view.accessible("It")->state().checked);
            // It follows the model as before.
            model->setProperty("value", false);
            QVERIFY(!control->property("checked").toBool());
            act();
            QVERIFY(model->property("value").toBool() && control->property("checked").toBool());
        };
        for (const char *way : {"pointer", "Space", "Return", "Press", "Toggle"}) {
            check(switchLines, way);
            check(chipLines, way);
        }
    }

    void whatIsDisabledSaysSo() {
        for (const QByteArray &lines :
             {switchLines, chipLines, boundTo("PrimaryButton { text: 'It'; onClicked: ++model.times }"),
              boundTo("LinkButton { text: 'It'; onClicked: ++model.times }"),
              boundTo("SymbolButton { symbol: 'plus'; text: 'It'; onClicked: ++model.times }"),
              boundTo("ContextMenuItem { text: 'It'; onTriggered: ++model.times }")}) {
            IN_ROW(lines.sliced(lines.indexOf("Column")));
            Window view(lines);
            QQuickItem *control = view.item("text", "It");
            const QImage enabled = view.grabWindow();
            QVERIFY(!view.accessible("It")->state().disabled);
            control->setEnabled(false);
            QVERIFY(view.accessible("It")->state().disabled);
            QVERIFY(view.grabWindow() != enabled);
            view.act("It", press);
            view.act("It", toggle);
            QCOMPARE(view.rootObject()->property("times").toInt(), 0);
            control->setEnabled(true);
            QVERIFY(!view.accessible("It")->state().disabled);
            QVERIFY(view.act("It", press));
            QCOMPARE(view.rootObject()->property("times").toInt(), 1);
        }
    }

    void aMenuIsWorkedByItsActions() {
        Window view(
            "Item { id: root; property string done; focus: true\n"
            "ContextMenu { id: menu\n"
            "ContextMenuItem { text: 'One'; onChosen: root.done += 'one' }\n"
            "ContextMenu { title: 'More'; ContextMenuItem { text: 'Two'; onChosen: root.done += 'two' } } }\n"
            "function open() { menu.popup(root, 10, 10) } }");
        QQuickItem *root = view.rootObject();
        const auto choose = [&](const QStringList &way, const QString &done) {
            QMetaObject::invokeMethod(root, "open");
            QTRY_VERIFY(view.accessible("One") && view.isSettled());
            for (const QString &entry : way) {
                QTRY_VERIFY(view.accessible(entry));
                QVERIFY(view.act(entry, press));
            }
            QTRY_COMPARE(root->property("done").toString(), done);
            QTRY_VERIFY(!view.accessible("One"));
        };
        choose({"One"}, "one");
        choose({"More", "Two"}, "onetwo");
    }

    void aSymbolTellsItsName() {
        const auto check = [](const QByteArray &place, bool byKey) {
            IN_ROW(place);
            const QString name = "The long name of what it does";
            // In a view that cuts, over which it stands.
            Window view("Item { clip: true; SymbolButton { symbol: 'plus'; text: '" + name.toUtf8() + "'; " +
                            place + "} }",
                        {300, 120});
            QQuickItem *button = view.item("text", name);
            const auto tip = [&] { return view.tip(name); };
            const auto placeOf = [](QQuickItem *item) { return item->mapRectToScene(item->boundingRect()); };
            QVERIFY(!tip());
            if (byKey)
                view.press(Qt::Key_Tab);
            else
                QTest::mouseMove(&view, ScreenWindow::middleOf(button));
            QTRY_VERIFY(tip());
            QTRY_VERIFY(QRectF(QPointF(), view.size()).contains(placeOf(tip())));
            QVERIFY(!placeOf(tip()).intersects(placeOf(button)));
            view.takePicture();
            if (byKey)
                view.rootObject()->forceActiveFocus();
            else
                QTest::mouseMove(&view, QPoint(view.width() / 2, 1));
            QTRY_VERIFY(!tip());
        };
        check("anchors.centerIn: parent", false);
        check("anchors.centerIn: parent", true);
        check("anchors { left: parent.left; verticalCenter: parent.verticalCenter }", false);
        check("anchors { right: parent.right; bottom: parent.bottom }", false);
    }

    void theFocusGoesBackWithItsRing() {
        for (const bool byKey : {true, false}) {
            Window view(
                "Item { PrimaryButton { id: opener; text: 'Open'; onClicked: loader.shown = true }\n"
                "SheetLoader { id: loader; sourceComponent: Sheet { title: 'It'; onClosed: loader.shown = "
                "false } } }");
            QQuickItem *button = view.item("text", "Open");
            if (byKey) {
                view.press(Qt::Key_Tab);
                view.press(Qt::Key_Return);
            } else {
                view.click("Open");
            }
            QTRY_VERIFY(view.showsAnywhere("text", "It"));
            QTRY_VERIFY(!button->hasActiveFocus());
            view.press(Qt::Key_Escape);
            QTRY_VERIFY(button->hasActiveFocus());
            QCOMPARE(button->property("visualFocus").toBool(), byKey);
        }
    }

    void theFocusStaysAwayFromWhatIsHidden() {
        Window view(
            "Item { FormField { id: field; text: 'field' }\n"
            "PrimaryButton { text: 'Open'; visible: !loader.shown; y: 80; onClicked: { loader.shown = true } "
            "}\n"
            "SheetLoader { id: loader; sourceComponent: Sheet { title: 'It' } }\n"
            "function leave() { loader.visible = false; field.forceActiveFocus(); loader.shown = false } }");
        QQuickItem *button = view.item("text", "Open");
        view.click("Open");
        QTRY_VERIFY(view.showsAnywhere("text", "It"));
        button->setVisible(false);
        QMetaObject::invokeMethod(view.rootObject(), "leave");
        QVERIFY(!button->hasActiveFocus());
        QTRY_COMPARE(view.activeFocusItem()->property("text").toString(), "field");
    }
};

QTEST_MAIN(TestControls)
#include "tst_controls.moc"

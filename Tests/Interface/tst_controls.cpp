// SPDX-License-Identifier: MIT
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
const QByteArray buttonLines =
    boundTo("PrimaryButton { text: 'It'; onClicked: { model.value = true; ++model.times } }");

} // namespace

class TestControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QGuiApplication::styleHints()->setMousePressAndHoldInterval(1); }
    void whateverTogglesEndsInTheModel_data();
    void whateverTogglesEndsInTheModel();
    void whatIsDisabledSaysSo_data();
    void whatIsDisabledSaysSo();
    void aMenuIsWorkedByItsActions();
    void aSymbolTellsItsName_data();
    void aSymbolTellsItsName();
    void theFocusGoesBackWithItsRing_data();
    void theFocusGoesBackWithItsRing();
    void theFocusStaysAwayFromWhatIsHidden();
};

void TestControls::whateverTogglesEndsInTheModel_data() {
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("way");
    for (const char *way : {"pointer", "Space", "Return", "Press", "Toggle"}) {
        QTest::addRow("switch, %s", way) << switchLines << QString::fromLatin1(way);
        QTest::addRow("chip, %s", way) << chipLines << QString::fromLatin1(way);
    }
}

void TestControls::whateverTogglesEndsInTheModel() {
    QFETCH(QByteArray, lines);
    QFETCH(QString, way);
    ScreenWindow view;
    view.resize(400, 200);
    view.openLines(lines);
    QObject *model = view.rootObject();
    QQuickItem *control = view.item("text", "It");
    const auto act = [&] {
        control->forceActiveFocus();
        if (way == "pointer"_L1)
            view.click("It");
        else if (way == "Space"_L1)
            view.press(Qt::Key_Space);
        else if (way == "Return"_L1)
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
}

void TestControls::whatIsDisabledSaysSo_data() {
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("button") << buttonLines;
    QTest::newRow("switch") << switchLines;
    QTest::newRow("chip") << chipLines;
    QTest::newRow("link") << boundTo("LinkButton { text: 'It'; onClicked: ++model.times }");
    QTest::newRow("symbol") << boundTo(
        "SymbolButton { symbol: 'plus'; text: 'It'; onClicked: ++model.times }");
    QTest::newRow("menu entry") << boundTo("ContextMenuItem { text: 'It'; onTriggered: ++model.times }");
}

void TestControls::whatIsDisabledSaysSo() {
    QFETCH(QByteArray, lines);
    ScreenWindow view;
    view.resize(400, 200);
    view.openLines(lines);
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

void TestControls::aMenuIsWorkedByItsActions() {
    ScreenWindow view;
    view.resize(400, 400);
    view.openLines(
        "Item { id: root; property string done; focus: true\n"
        "ContextMenu { id: menu\n"
        "ContextMenuItem { text: 'One'; onChosen: root.done += 'one' }\n"
        "ContextMenu { title: 'More'; ContextMenuItem { text: 'Two'; onChosen: root.done += 'two' } } }\n"
        "function open() { menu.popup(root, 10, 10) } }");
    QQuickItem *root = view.rootObject();
    const auto open = [&] {
        QMetaObject::invokeMethod(root, "open");
        return QTest::qWaitFor([&] { return view.accessible("One") && view.isSettled(); });
    };
    QVERIFY(open());
    QVERIFY(view.act("One", press));
    QTRY_COMPARE(root->property("done").toString(), "one");
    QTRY_VERIFY(!view.accessible("One"));
    QVERIFY(open());
    QVERIFY(view.act("More", press));
    QTRY_VERIFY(view.accessible("Two"));
    QVERIFY(view.act("Two", press));
    QTRY_COMPARE(root->property("done").toString(), "onetwo");
    QTRY_VERIFY(!view.accessible("One"));
}

void TestControls::aSymbolTellsItsName_data() {
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<bool>("byKey");
    QTest::newRow("in the middle") << QByteArray("anchors.centerIn: parent") << false;
    QTest::newRow("by key") << QByteArray("anchors.centerIn: parent") << true;
    QTest::newRow("at the left end")
        << QByteArray("anchors { left: parent.left; verticalCenter: parent.verticalCenter }") << false;
    QTest::newRow("in the last corner")
        << QByteArray("anchors { right: parent.right; bottom: parent.bottom }") << false;
}

void TestControls::aSymbolTellsItsName() {
    QFETCH(QByteArray, place);
    QFETCH(bool, byKey);
    const QString name = u"The long name of what it does"_s;
    ScreenWindow view;
    view.resize(300, 120);
    view.openLines("Item { clip: true; SymbolButton { symbol: 'plus'; text: '" + name.toUtf8() + "'; " +
                   place + "} }");
    QQuickItem *button = view.item("text", name);
    // In a view that cuts, over which it stands.
    const auto tip = [&] { return view.tip(name); };
    QVERIFY(!tip());
    if (byKey)
        view.press(Qt::Key_Tab);
    else
        QTest::mouseMove(&view, ScreenWindow::middleOf(button));
    QTRY_VERIFY(tip());
    QTRY_VERIFY(QRectF(QPointF(), view.size()).contains(tip()->mapRectToScene(tip()->boundingRect())));
    QVERIFY(!tip()
                 ->mapRectToScene(tip()->boundingRect())
                 .intersects(button->mapRectToScene(button->boundingRect())));
    view.takePicture();
    if (byKey)
        view.rootObject()->forceActiveFocus();
    else
        QTest::mouseMove(&view, QPoint(view.width() / 2, 1));
    QTRY_VERIFY(!tip());
}

void TestControls::theFocusGoesBackWithItsRing_data() {
    QTest::addColumn<bool>("byKey");
    QTest::newRow("key") << true;
    QTest::newRow("pointer") << false;
}

void TestControls::theFocusGoesBackWithItsRing() {
    QFETCH(bool, byKey);
    ScreenWindow view;
    view.resize(400, 400);
    view.openLines("Item { PrimaryButton { id: opener; text: 'Open'; onClicked: loader.shown = true }\n"
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

void TestControls::theFocusStaysAwayFromWhatIsHidden() {
    ScreenWindow view;
    view.resize(400, 400);
    view.openLines(
        "Item { FormField { id: field; text: 'field' }\n"
        "PrimaryButton { text: 'Open'; visible: !loader.shown; y: 80; onClicked: { loader.shown = true } }\n"
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

QTEST_MAIN(TestControls)
#include "tst_controls.moc"

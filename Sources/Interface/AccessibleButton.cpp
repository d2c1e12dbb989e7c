// SPDX-License-Identifier: MIT
#include "Interface/AccessibleButton.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QQmlContext>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

class AccessibleButton : public QAccessibleObject, public QAccessibleActionInterface {
public:
    explicit AccessibleButton(QQuickItem *button)
        : QAccessibleObject(button) {
        QObject::connect(button, &QQuickItem::enabledChanged, button, [button] {
            QAccessible::State changed;
            changed.disabled = true;
            QAccessibleStateChangeEvent event(button, changed);
            QAccessible::updateAccessibility(&event);
        });
    }

    QAccessibleInterface *parent() const override {
        const QQuickWindow *window = item()->window();
        for (QQuickItem *around = item()->parentItem(); around && window && around != window->contentItem();
             around = around->parentItem()) {
            if (QAccessibleInterface *found = QAccessible::queryAccessibleInterface(around))
                return found;
        }
        return QAccessible::queryAccessibleInterface(item()->window());
    }
    // A button is one thing, whatever it is drawn with.
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }

    QWindow *window() const override { return item()->window(); }

    QRect rect() const override {
        if (!item()->window() || !item()->isVisible())
            return {};
        const QPoint corner = item()->window()->mapToGlobal(item()->mapToScene(QPointF()).toPoint());
        return {corner, item()->size().toSize()};
    }

    QAccessible::Role role() const override { return QAccessible::Role(told("role").toInt()); }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name)
            return told("name").toString();
        return kind == QAccessible::Description ? told("description").toString() : QString();
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        state.disabled = !item()->isEnabled();
        state.focusable = item()->isEnabled() && item()->activeFocusOnTab();
        state.focused = item()->hasActiveFocus();
        state.pressed = item()->property("down").toBool();
        state.checkable = item()->property("checkable").toBool();
        state.checked = state.checkable && item()->property("checked").toBool();
        state.invisible = !item()->isVisible() || item()->opacity() == 0.0;
        state.offscreen = !item()->window() || !item()->window()->geometry().intersects(rect());
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : QAccessibleObject::interface_cast(type);
    }

    QStringList actionNames() const override {
        QStringList names{pressAction(), setFocusAction()};
        if (item()->property("checkable").toBool())
            names.append(toggleAction());
        return names;
    }
    void doAction(const QString &name) override {
        if (name == setFocusAction())
            item()->forceActiveFocus(Qt::TabFocusReason);
        else
            QMetaObject::invokeMethod(item(), "press");
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QQuickItem *item() const { return static_cast<QQuickItem *>(object()); }
    QVariant told(const char *property) const {
        return QQmlProperty::read(item(), u"Accessible."_s + QLatin1StringView(property), qmlContext(item()));
    }
};

QAccessibleInterface *makeAccessibleButton(const QString &className, QObject *object) {
    const bool isButton =
        className == "QQuickAbstractButton"_L1 && object->metaObject()->indexOfMethod("press()") >= 0;
    return isButton ? new AccessibleButton(static_cast<QQuickItem *>(object)) : nullptr;
}

} // namespace

void installAccessibleButtons() {
    QAccessible::installFactory(&makeAccessibleButton);
}

} // namespace orvane

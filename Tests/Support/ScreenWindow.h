// SPDX-License-Identifier: MIT
#pragma once

#include "Interface/AccessibleButton.h"
#include "Interface/SymbolImages.h"
#include "Interface/Theme.h"
#include "Support/FindItem.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickView>
#include <QTest>

namespace orvane {

using namespace Qt::StringLiterals;

/// A window with one screen.
struct ScreenWindow : QQuickView {
    ScreenWindow() {
        [[maybe_unused]] static const bool once = (installAccessibleButtons(), true);
        engine()->addImportPath(u"qrc:/"_s);
        engine()->addImageProvider(u"symbol"_s, new SymbolImages);
        setResizeMode(QQuickView::SizeRootObjectToView);
    }

    void open(const QString &file, const QVariantMap &properties) {
        setInitialProperties(properties);
        setSource(QUrl(file));
        show();
        requestActivate();
    }

    /// The same with a screen of a few lines, which may import more than the kit.
    void openLines(const QByteArray &lines, const QVariantMap &properties = {}) {
        auto *component = new QQmlComponent(engine(), this);
        component->setData("import QtQuick\nimport OrvaneTalk.Interface\n" + lines, QUrl());
        QObject *root = component->createWithInitialProperties(properties);
        if (!root)
            qFatal("%s", qPrintable(component->errorString()));
        setContent(QUrl(), component, root);
        show();
        requestActivate();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("The window did not become active.");
    }

    Theme *tokens() {
        return engine()->singletonInstance<Theme *>(qmlTypeId("OrvaneTalk.Interface", 1, 0, "Theme"));
    }
    void use(OrvaneTheme theme) {
        tokens()->use(theme);
        setColor(tokens()->background);
    }

    /// In the screen.
    QQuickItem *item(const char *property, const QVariant &value) const {
        return findItem(rootObject(), property, value);
    }
    /// In the screen, or over it.
    bool showsAnywhere(const char *property, const QVariant &value) const {
        return findItem(contentItem(), property, value) != nullptr;
    }

    /// Nothing fades in or out any more.
    bool isSettled() const {
        for (QQuickItem *layer : contentItem()->childItems()) {
            for (QQuickItem *child : layer->childItems()) {
                if (layer->inherits("QQuickOverlay") && child->isVisible() && child->opacity() < 1.0)
                    return false;
            }
        }
        return true;
    }

    /// What stands over the screen and has this text.
    QQuickItem *tip(const QString &text) const {
        for (QQuickItem *layer : contentItem()->childItems()) {
            if (layer->inherits("QQuickOverlay"))
                return findItem(layer, "text", text);
        }
        return nullptr;
    }

    static QPoint middleOf(const QQuickItem *item) {
        return item->mapToScene(item->boundingRect().center()).toPoint();
    }
    /// On whatever has this text, in the screen or over it.
    void click(const QString &text) {
        QQuickItem *target = findItem(contentItem(), "text", text);
        QVERIFY(target);
        QTest::mouseClick(this, Qt::LeftButton, {}, middleOf(target));
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(this, Qt::Key(key), modifiers);
    }
    void type(const char *letters) {
        for (; *letters; ++letters)
            QTest::keyClick(this, *letters);
    }

    /// What assistive technology finds under this name, first in depth; null when there is nothing of it.
    QAccessibleInterface *accessible(const QString &name) {
        return accessible(QAccessible::queryAccessibleInterface(this), name);
    }
    static QAccessibleInterface *accessible(QAccessibleInterface *around, const QString &name) {
        if (around->text(QAccessible::Name) == name && !around->state().invisible)
            return around;
        for (int index = 0; index < around->childCount(); ++index) {
            QAccessibleInterface *child = around->child(index);
            if (QAccessibleInterface *found = child ? accessible(child, name) : nullptr)
                return found;
        }
        return nullptr;
    }
    /// What assistive technology can do with it: "Press", "Toggle". False where it can't.
    bool act(const QString &name, const QString &action) {
        QAccessibleInterface *target = accessible(name);
        if (!target || !target->actionInterface() ||
            !target->actionInterface()->actionNames().contains(action))
            return false;
        target->actionInterface()->doAction(action);
        return true;
    }

    /// For whoever wants to look: kept only where ORVANETALK_PICTURES names a folder.
    void takePicture(const QString &name = {}) {
        if (const QString pictures = qEnvironmentVariable("ORVANETALK_PICTURES"); !pictures.isEmpty())
            grabWindow().save(u"%1/%2-%3%4.png"_s.arg(pictures, QString::fromUtf8(QTest::currentDataTag()))
                                  .arg(++m_pictures)
                                  .arg(name));
    }

private:
    int m_pictures = 0;
};

} // namespace orvane

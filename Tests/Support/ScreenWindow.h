#pragma once

#include "Interface/SymbolImages.h"
#include "Interface/Theme.h"
#include "Support/FindItem.h"

#include <QQmlEngine>
#include <QQuickView>
#include <QTest>

namespace orvane {

/// A window with the screen of one QML file.
struct ScreenWindow : QQuickView {
    ScreenWindow() {
        engine()->addImportPath(QStringLiteral("qrc:/"));
        engine()->addImageProvider(QStringLiteral("symbol"), new SymbolImages);
        setResizeMode(QQuickView::SizeRootObjectToView);
    }

    void open(const QString &file, const QVariantMap &properties) {
        setInitialProperties(properties);
        setSource(QUrl(file));
        show();
        requestActivate();
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

    /// On whatever has this text, in the screen or over it.
    void click(const QString &text) {
        QQuickItem *target = findItem(contentItem(), "text", text);
        QVERIFY(target);
        QTest::mouseClick(this, Qt::LeftButton, {},
                          target->mapToScene(target->boundingRect().center()).toPoint());
    }
    void type(const char *letters) {
        for (; *letters; ++letters)
            QTest::keyClick(this, *letters);
    }

    /// For whoever wants to look: kept only where ORVANETALK_PICTURES names a folder.
    void takePicture(const QString &name = {}) {
        if (const QString pictures = qEnvironmentVariable("ORVANETALK_PICTURES"); !pictures.isEmpty())
            grabWindow().save(QStringLiteral("%1/%2-%3%4.png")
                                  .arg(pictures, QString::fromUtf8(QTest::currentDataTag()))
                                  .arg(++m_pictures)
                                  .arg(name));
    }

private:
    int m_pictures = 0;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Interface/SymbolImages.h"
#include "Support/TestMain.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickGraphicsDevice>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickRenderTarget>
#include <QQuickWindow>

#include <memory>

namespace orvane::benchmarks {

using namespace Qt::StringLiterals;

/// The application of a benchmark with screens: no display, no graphics card, folders of its own.
class OffscreenApplication {
public:
    OffscreenApplication(int &argc, char **argv)
        : m_application((prepare(), argc), argv) {}

private:
    static void prepare() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }

    OwnFolders m_folders;
    QGuiApplication m_application;
};

/// A screen of one QML file, drawn into an image by the processor alone, a frame whenever one is asked for.
class OffscreenScene {
public:
    OffscreenScene(const QUrl &file, const QVariantMap &properties, QSize size)
        : m_image(size, QImage::Format_ARGB32_Premultiplied)
        , m_window(&m_control)
        , m_component((prepare(m_engine), &m_engine), file) {
        m_window.resize(size);
        m_window.contentItem()->setSize(size);
        m_window.setRenderTarget(QQuickRenderTarget::fromPaintDevice(&m_image));
        build(properties);
    }

    /// The screen once more, in place of the one before.
    void build(const QVariantMap &properties) {
        m_root.reset(qobject_cast<QQuickItem *>(m_component.createWithInitialProperties(properties)));
        if (!m_root)
            qFatal("%s", qUtf8Printable(m_component.errorString()));
        m_root->setSize(m_window.size());
        m_root->setParentItem(m_window.contentItem());
    }

    QQuickItem *root() const { return m_root.get(); }
    QQmlEngine &engine() { return m_engine; }

    /// The list view with so many rows.
    QQuickItem *listOf(int count) const {
        for (QQuickItem *item : m_root->findChildren<QQuickItem *>()) {
            if (item->inherits("QQuickListView") && item->property("count").toInt() == count)
                return item;
        }
        qFatal("The scene has no list of %d.", count);
    }

    void frame() {
        QCoreApplication::processEvents();
        // Outside of exec() nothing else lets go of what is to be deleted later.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_control.polishItems();
        m_control.beginFrame();
        m_control.sync();
        m_control.render();
        m_control.endFrame();
    }

private:
    static void prepare(QQmlEngine &engine) {
        engine.addImportPath(u"qrc:/"_s);
        engine.addImageProvider(u"symbol"_s, new SymbolImages);
    }

    QImage m_image;
    QQmlEngine m_engine;
    QQuickRenderControl m_control;
    QQuickWindow m_window;
    QQmlComponent m_component;
    std::unique_ptr<QQuickItem> m_root;
};

} // namespace orvane::benchmarks

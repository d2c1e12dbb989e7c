// SPDX-License-Identifier: MIT
#include "Application/OrvaneTalkApp.h"
#include "Interface/AccessibleButton.h"
#include "Interface/SymbolImages.h"
#include "Platform/SingleInstance.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#if __has_include(<malloc.h>)
#include <malloc.h>

using namespace Qt::StringLiterals;
#endif

namespace {

void keepMemorySmall() {
#ifdef M_ARENA_MAX
    // Few threads allocate here, and seldom at once: a heap for each core would only hold free memory.
    mallopt(M_ARENA_MAX, 2);
#endif
}

void drawWithTheProcessor() {
    // Whoever says otherwise is heard.
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setSceneGraphBackend(u"software"_s);
}

void bringUp(QQuickWindow &window) {
    window.setVisible(true);
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.raise();
    window.requestActivate();
}

} // namespace

int main(int argc, char *argv[]) {
    QGuiApplication::setDesktopFileName(u"com.orvanetalk.OrvaneTalk"_s);
    QGuiApplication::setApplicationName(u"OrvaneTalk"_s);
    keepMemorySmall();
    drawWithTheProcessor();
    const QGuiApplication application(argc, argv);
    orvane::SingleInstance instance;
    if (!instance.claim())
        return 0;

    orvane::OrvaneTalkApp app;
    QObject::connect(&instance, &orvane::SingleInstance::windowWanted, &app,
                     &orvane::OrvaneTalkApp::windowWanted);
    orvane::installAccessibleButtons();
    QQmlApplicationEngine engine;
    engine.addImportPath(u"qrc:/"_s);
    engine.addImageProvider(u"symbol"_s, new orvane::SymbolImages);
    engine.setInitialProperties({{u"app"_s, QVariant::fromValue(&app)}});
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &application,
        [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    engine.load(u"qrc:/OrvaneTalk/Application/MainWindow.qml"_s);
    for (QObject *root : engine.rootObjects()) {
        auto *window = qobject_cast<QQuickWindow *>(root);
        if (!window)
            continue;
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, &orvane::OrvaneTalkApp::finishLaunching,
                         Qt::SingleShotConnection);
        QObject::connect(&app, &orvane::OrvaneTalkApp::windowWanted, window, [window] { bringUp(*window); });
    }
    return QGuiApplication::exec();
}

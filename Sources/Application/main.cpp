#include "Application/OrvaneTalkApp.h"
#include "Interface/SymbolImages.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>

int main(int argc, char *argv[]) {
    QGuiApplication::setDesktopFileName(QStringLiteral("com.orvanetalk.OrvaneTalk"));
    QGuiApplication::setApplicationName(QStringLiteral("OrvaneTalk"));
    // Images here are a few small symbols: the smallest texture atlas holds them all, a window-sized one
    // wastes memory.
    for (const char *side : {"QSG_ATLAS_WIDTH", "QSG_ATLAS_HEIGHT"}) {
        if (!qEnvironmentVariableIsSet(side))
            qputenv(side, "512");
    }
    const QGuiApplication application(argc, argv);

    orvane::OrvaneTalkApp app;
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/"));
    engine.addImageProvider(QStringLiteral("symbol"), new orvane::SymbolImages);
    engine.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(&app)}});
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &application,
        [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    engine.load(QStringLiteral("qrc:/OrvaneTalk/Application/MainWindow.qml"));
    return QGuiApplication::exec();
}

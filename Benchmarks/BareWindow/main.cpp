#include <QGuiApplication>
#include <QQmlApplicationEngine>

// The yardstick of the start-up benchmark: the least that a program with a Qt Quick window can be.
int main(int argc, char *argv[]) {
    const QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.load(QStringLiteral("qrc:/BareWindow/Bare.qml"));
    return QGuiApplication::exec();
}

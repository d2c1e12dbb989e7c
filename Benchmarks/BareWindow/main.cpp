// SPDX-License-Identifier: MIT
#include <QGuiApplication>
#include <QQmlApplicationEngine>

using namespace Qt::StringLiterals;

// The yardstick of the start-up benchmark: the least that a program with a Qt Quick window can be.
int main(int argc, char *argv[]) {
    const QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.load(u"qrc:/BareWindow/Bare.qml"_s);
    return QGuiApplication::exec();
}

// SPDX-License-Identifier: MIT
#include "ManyChats.h"
#include "OffscreenScene.h"
#include "Ratio.h"

// A frame of the scrolled main screen against one of a plain list.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int chats = 10'000;
constexpr int frames = 60;
constexpr QSize sidebar(320, 650);

/// Further down by so many pixels a frame, and around again at the end.
int scroll(benchmarks::OffscreenScene &scene, QQuickItem *list, double step) {
    const double range = list->property("contentHeight").toDouble() - list->height();
    for (int frame = 0; frame < frames; ++frame) {
        const double next = list->property("contentY").toDouble() + step;
        list->setProperty("contentY", next < range ? next : 0.0);
        scene.frame();
    }
    return frames;
}

} // namespace

int main(int argc, char **argv) {
    const benchmarks::OffscreenApplication application(argc, argv);
    benchmarks::ManyChats desk(chats);
    benchmarks::OffscreenScene screen(QUrl(u"qrc:/OrvaneTalk/ChatList/ChatSidebar.qml"_s),
                                      {{u"screen"_s, QVariant::fromValue(&desk.list())}}, sidebar);
    benchmarks::OffscreenScene plain(QUrl(u"qrc:/PlainList/PlainList.qml"_s), {{u"count"_s, chats}}, sidebar);
    desk.load();
    QQuickItem *chatList = screen.listOf(chats);
    QQuickItem *plainList = plain.listOf(chats);
    plainList->setSize(chatList->size());
    benchmarks::ratio(
        "60 frames, 12 px a frame", 41, [&] { return scroll(screen, chatList, 12); },
        [&] { return scroll(plain, plainList, 12); });
    benchmarks::ratio(
        "60 frames, a row a frame", 41, [&] { return scroll(screen, chatList, 64); },
        [&] { return scroll(plain, plainList, 64); });
    return 0;
}

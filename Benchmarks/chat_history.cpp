// SPDX-License-Identifier: MIT
#include "Conversation/Receiving/ChatHistory.h"
#include "Heap.h"
#include "ManyChats.h"
#include "OffscreenScene.h"
#include "Ratio.h"

// What the messages of an open chat cost, in time and in memory.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int batch = 100;
constexpr QSize window(900, 650);

QJsonObject record(int number) {
    return {
        {u"id"_s, u"3f2504e0-4f89-41d3-9a0c-%1"_s.arg(number, 12, 10, QChar(u'0'))},
        {u"chat_id"_s, u"c"_s},
        {u"sender_id"_s, QString::number(7 + number % 2)},
        {u"type"_s, u"text"_s},
        {u"content"_s, u"A message of ordinary length, as people write them all day long. №%1"_s.arg(number)},
        {u"created_at"_s, 1'700'000'000.25 + number},
        {u"reactions"_s, QJsonArray()}};
}

QByteArray historyAnswer(int count = historyPageSize) {
    QJsonArray messages;
    for (int number = 0; number < count; ++number)
        messages.append(record(number));
    return json::compact({{u"messages"_s, messages}});
}

void awaitHistory(MessengerChatView &screen) {
    while (screen.isLoading)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

struct OneChat : OpenChatParts {
    explicit OneChat(const QByteArray &history) {
        chat.id = u"c"_s;
        chat.participants = {u"7"_s, u"8"_s};
        http.answerFor("/api/messenger/chats/c/messages", ScriptedAnswer::of(200, history));
    }

    std::shared_ptr<MessengerChatView> screen() {
        return std::make_shared<MessengerChatView>(chat, Contacts(), u"7"_s, chatParts());
    }

    MessengerChat chat;
};

void measureRows(const QByteArray &history) {
    OneChat desk(history);
    auto shown = desk.screen();
    benchmarks::OffscreenScene scene(QUrl(u"qrc:/OrvaneTalk/Conversation/ChatScreen.qml"_s),
                                     {{u"screen"_s, QVariant::fromValue(shown.get())}}, window);
    scene.frame();
    benchmarks::ratio(
        "50 messages to visible rows / JSON parse", 41,
        [&] {
            const auto next = desk.screen();
            scene.build({{u"screen"_s, QVariant::fromValue(next.get())}});
            shown = next;
            next->loadMessages();
            awaitHistory(*next);
            scene.frame();
            return next->messages.count();
        },
        [&] { return json::parse(history).toObject().size(); });
}

void measureAppending(const QByteArray &history) {
    OneChat desk(history);
    const auto screen = desk.screen();
    screen->loadMessages();
    awaitHistory(*screen);
    RecordList<MessengerMessage> bare;
    bare.assign(screen->messages.records());
    const MessengerMessage message = bare.at(0);
    const WSEvent event{
        u"messenger_message"_s,
        {{u"type"_s, u"messenger_message"_s}, {u"chat_id"_s, u"c"_s}, {u"message"_s, record(99)}}};
    benchmarks::ratio(
        "100 live messages / insert of 100 records", 401,
        [&] {
            for (int number = 0; number < batch; ++number)
                Q_EMIT desk.socket.events(event);
            return screen->messages.count();
        },
        [&] {
            for (int number = 0; number < batch; ++number)
                bare.append(message);
            return bare.count();
        });
}

/// What many messages of one chat leave in memory while it is open, against their bare records.
void measureManyMessages() {
    constexpr int many = 10'000;
    const QByteArray everything = historyAnswer(many);
    for (const bool live : {true, false}) {
        OneChat desk(live ? historyAnswer(0) : everything);
        const auto screen = desk.screen();
        benchmarks::OffscreenScene scene(QUrl(u"qrc:/OrvaneTalk/Conversation/ChatScreen.qml"_s),
                                         {{u"screen"_s, QVariant::fromValue(screen.get())}}, window);
        scene.frame();
        const double before = benchmarks::heapInUse();
        screen->loadMessages();
        awaitHistory(*screen);
        for (int number = 0; live && number < many; ++number) {
            Q_EMIT desk.socket.events(
                {u"messenger_message"_s, {{u"chat_id"_s, u"c"_s}, {u"message"_s, record(number)}}});
            if (number % 100 == 0)
                scene.frame();
        }
        scene.frame();
        scene.engine().collectGarbage();
        desk.http.reset();
        const double after = benchmarks::heapInUse() - before;
        RecordList<MessengerMessage> bare;
        const double empty = benchmarks::heapInUse();
        for (int number = 0; number < many; ++number)
            bare.append(*MessengerMessage::fromHistory(u"c"_s, record(number)));
        benchmarks::printHeapRatio(live ? "10,000 live messages / bare records"
                                        : "10,000 messages of history / bare records",
                                   after, benchmarks::heapInUse() - empty);
    }
}

void measureMemory(const QByteArray &history) {
    constexpr int few = 100;
    constexpr int many = 500;
    benchmarks::ManyChats desk(many);
    for (int chat = 0; chat < many; ++chat)
        desk.http().answerFor("/api/messenger/chats/" + QByteArray::number(chat) + "/messages",
                              ScriptedAnswer::of(200, history));
    benchmarks::OffscreenScene scene(QUrl(u"qrc:/OrvaneTalk/ChatList/ChatListScreen.qml"_s),
                                     {{u"screen"_s, QVariant::fromValue(&desk.list())}}, window);
    desk.awaitChats();
    const auto openAndClose = [&](int from, int to) {
        for (int chat = from; chat < to; ++chat) {
            desk.list().selectedChatID = QString::number(chat);
            awaitHistory(*desk.list().openChat());
            scene.frame();
            desk.list().selectedChatID = QString();
            scene.frame();
            desk.http().reset();
        }
        scene.engine().collectGarbage();
        scene.frame();
        return benchmarks::heapInUse();
    };
    const double afterFew = openAndClose(0, few);
    benchmarks::printHeapRatio("heap after 500 chats / after 100", openAndClose(few, many), afterFew);
}

} // namespace

int main(int argc, char **argv) {
    const benchmarks::OffscreenApplication application(argc, argv);
    const QByteArray history = historyAnswer();
    measureRows(history);
    measureAppending(history);
    measureManyMessages();
    measureMemory(history);
    return 0;
}

// SPDX-License-Identifier: MIT
#include "Heap.h"
#include "ManyChats.h"
#include "Ratio.h"
#include "Support/TestMain.h"

#include <vector>

// What a message costs the main screen, against the parse of the frame that brings it.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int chats = 10'000;
constexpr int batch = 500;
constexpr int burst = 50'000;

/// As a home server sends it. The chats come in no order of the list.
QByteArray frame(int number) {
    const QString chatID = QString::number(qint64(number) * 7919 % chats);
    return json::compact(
        {{u"type"_s, u"messenger_message"_s},
         {u"chat_id"_s, chatID},
         {u"message"_s,
          QJsonObject{{u"id"_s, u"3f2504e0-4f89-41d3-9a0c-%1"_s.arg(number, 12, 10, QChar(u'0'))},
                      {u"chat_id"_s, chatID},
                      {u"sender_id"_s, u"9"_s},
                      {u"type"_s, u"text"_s},
                      {u"content"_s, u"See you at twelve, bring the numbers."_s},
                      {u"created_at"_s, 1'700'000'000.25 + number},
                      {u"reactions"_s, QJsonArray()}}}});
}

} // namespace

int main(int argc, char **argv) {
    const OwnFolders folders;
    const QCoreApplication application(argc, argv);
    benchmarks::ManyChats desk(chats);
    desk.load();

    const auto receive = [&desk](int count) {
        for (int number = 0; number < count; ++number)
            Q_EMIT desk.socket().events(*WSEvent::fromFrame(QString::fromUtf8(frame(number))));
        return benchmarks::heapInUse();
    };
    // The list as the server gives it knows nobody who wrote; one message in each chat tells.
    const double before = receive(chats);
    benchmarks::printHeapRatio("heap after 50,000 messages / before", receive(burst), before);

    std::vector<QByteArray> frames;
    std::vector<WSEvent> events;
    for (int number = 0; number < batch; ++number) {
        frames.push_back(frame(number));
        events.push_back(*WSEvent::fromFrame(QString::fromUtf8(frames.back())));
    }
    benchmarks::ratio(
        "500 messages, 10,000 chats / JSON parse", 401,
        [&] {
            for (const WSEvent &event : events)
                Q_EMIT desk.socket().events(event);
            return desk.list().unreadSum();
        },
        [&] {
            qsizetype sum = 0;
            for (const QByteArray &bytes : frames)
                sum += json::parse(bytes).toObject().size();
            return sum;
        });
    return 0;
}

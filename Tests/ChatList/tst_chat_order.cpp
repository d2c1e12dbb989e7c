#include "ChatList/ChatOrder.h"
#include "Support/TestMain.h"

#include <QRandomGenerator>

#include <algorithm>

using namespace orvane;

class TestChatOrder : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void movingOneChatGivesTheSameListAsSortingAgain();
    void aChatWithoutMessagesIsDatedByItself();
};

void TestChatOrder::movingOneChatGivesTheSameListAsSortingAgain() {
    QRandomGenerator random(20'261'122);
    const QDateTime start = QDateTime::fromSecsSinceEpoch(1'000'000);
    for (int round = 0; round < 300; ++round) {
        QList<MessengerChat> chats;
        const int size = random.bounded(1, 12);
        for (int i = 0; i < size; ++i) {
            MessengerChat chat;
            chat.id = QString::number(i);
            // Few distinct dates, so that equal ones are common.
            chat.updatedAt = start.addSecs(random.bounded(4));
            if (random.bounded(2)) {
                chat.lastMessage.emplace();
                chat.lastMessage->timestamp = start.addSecs(random.bounded(4));
            }
            chats.append(chat);
        }
        std::stable_sort(chats.begin(), chats.end(), standsBefore);
        const int row = random.bounded(size);
        chats[row].lastMessage.emplace();
        chats[row].lastMessage->timestamp = start.addSecs(random.bounded(6));
        QList<MessengerChat> moved = chats;
        moved.move(row, rowFor(chats.at(row), chats));
        QVERIFY(std::is_sorted(moved.cbegin(), moved.cend(), standsBefore));
    }
}

void TestChatOrder::aChatWithoutMessagesIsDatedByItself() {
    MessengerChat silent;
    silent.updatedAt = QDateTime::fromSecsSinceEpoch(50);
    MessengerChat spoken;
    spoken.updatedAt = QDateTime::fromSecsSinceEpoch(90);
    spoken.lastMessage.emplace();
    spoken.lastMessage->timestamp = QDateTime::fromSecsSinceEpoch(10);
    QVERIFY(standsBefore(silent, spoken));
    QVERIFY(!standsBefore(spoken, silent));
    QVERIFY(!standsBefore(silent, silent));
}

ORVANE_TEST_MAIN(TestChatOrder)
#include "tst_chat_order.moc"

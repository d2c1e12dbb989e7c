#include "ChatList/ChatOrder.h"

#include <algorithm>

namespace orvane {

QDateTime dateOf(const MessengerChat &chat) {
    return chat.lastMessage ? chat.lastMessage->timestamp : chat.updatedAt;
}

bool standsBefore(const MessengerChat &a, const MessengerChat &b) {
    return dateOf(a) > dateOf(b);
}

int rowFor(const MessengerChat &chat, const QList<MessengerChat> &chats) {
    return int(std::count_if(chats.cbegin(), chats.cend(), [&](const MessengerChat &other) {
        return other.id != chat.id && standsBefore(other, chat);
    }));
}

} // namespace orvane

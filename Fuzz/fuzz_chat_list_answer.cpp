// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Model/ChatListAnswer.h"

#include <cstdint>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

void check(const AC &chat) {
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    const MessengerChat made = chat.toChat(now);
    invariant(made.id == chat.id && made.title == chat.title, "id and title are copied");
    invariant(made.participants.size() == (chat.participants ? chat.participants->size() : 0),
              "no participant is lost");
    invariant(made.lastMessage.has_value() == (chat.last_message && chat.last_msg_at),
              "a preview needs its text and its time");
    invariant(!made.lastMessage || made.lastMessage->chatID == made.id, "a preview belongs to its chat");
    survivesStoring(made);
}

} // namespace

/// The body of the chat list answer. Any failure but the two that it declares ends the run.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        const CR answer = CR::decode(bytes);
        const QJsonObject top = parsed(bytes).toObject();
        invariant(answer.chats.size() == top.value("chats"_L1).toArray().size(), "no chat is lost");
        invariant(CR::decode(json::compact(top)) == answer, "the answer written again is the same answer");
        for (const AC &chat : answer.chats)
            check(chat);
    } catch (const JsonError &) {
        invariant(parsed(bytes).isUndefined(), "JSON is not called no JSON");
    } catch (const DecodingError &) {
        invariant(!parsed(bytes).isUndefined(), "what is no JSON is not called another shape");
    }
    return 0;
}

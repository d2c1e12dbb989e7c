// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Model/ChatFolder.h"
#include "Model/MessengerChat.h"

#include <cstdint>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

template <Record R>
void readAs(const QJsonObject &object) {
    const auto record = derived::fromJson<R>(object);
    if (!record)
        return;
    survivesStoring(*record);
    QJsonObject more = object;
    more.insert(u"a key that no record has"_s, 1);
    invariant(derived::fromJson<R>(more) == record, "unknown keys change nothing");
}

} // namespace

/// The first byte picks the kind of record, the rest is its stored form.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    const QJsonObject object = parsed(bytes).toObject();
    constexpr void (*kinds[])(const QJsonObject &) = {
        readAs<MessengerMessage>,      readAs<MessengerChat>,   readAs<MessengerUser>,
        readAs<MessengerPoll>,         readAs<PollOption>,      readAs<Attachment>,
        readAs<ForwardInfo>,           readAs<MessageReaction>, readAs<ChatFolder>,
        readAs<MessengerChatSettings>,
    };
    kinds[data[0] % std::size(kinds)](object);
    return 0;
}

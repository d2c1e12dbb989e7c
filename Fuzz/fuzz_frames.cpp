// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "LocalNetwork/FrameReader.h"
#include "LocalNetwork/LanFrames.h"

#include <cstdint>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

// The plain way: all bytes at once, one after the other.
QByteArrayList plainlyCut(const QByteArray &stream) {
    QByteArrayList bodies;
    qsizetype at = 0;
    while (stream.size() - at >= 4) {
        qint64 length = 0;
        for (qsizetype byte = 0; byte < 4; ++byte)
            length = length * 256 + uchar(stream.at(at + byte));
        if (stream.size() - at - 4 < length)
            break;
        bodies.append(stream.mid(at + 4, length));
        at += 4 + length;
    }
    return bodies;
}

void checkBody(const QByteArray &body) {
    const lan::Frame frame = lan::parseFrame(body);
    const QJsonObject object = parsed(body).toObject();
    const QString type = object.value("type"_L1).toString();
    if (const auto *hello = std::get_if<lan::Hello>(&frame)) {
        invariant(type == "hello"_L1, "a hello says that it is one");
        invariant(object.value("user_id"_L1) == QJsonValue(hello->userId), "its id is what it says");
    } else if (const auto *message = std::get_if<lan::Message>(&frame)) {
        invariant(type == "message"_L1, "a message says that it is one");
        const QByteArray again = lan::framed(lan::message(message->chatId, message->message));
        invariant(lan::parseFrame(QByteArrayView(again).sliced(4)) == frame,
                  "a message written again is the same message");
    }
}

} // namespace

/// The first byte counts the sizes of reads that follow it; what is behind them arrives in such reads, by
/// turns.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    if (input.isEmpty())
        return 0;
    const qsizetype turns = qMin(qsizetype(uchar(input.front())), input.size() - 1);
    const QByteArray reads = input.mid(1, turns);
    const QByteArray stream = input.mid(1 + turns);

    FrameReader reader;
    QByteArrayList bodies;
    qsizetype at = 0;
    for (qsizetype turn = 0; at < stream.size(); ++turn) {
        const qsizetype read = reads.isEmpty() ? stream.size() : 1 + uchar(reads.at(turn % reads.size()));
        reader.append(QByteArrayView(stream).sliced(at, qMin(read, stream.size() - at)));
        at += read;
        while (const auto body = reader.next())
            bodies.append(body->toByteArray());
        invariant(reader.capacity() <= 2 * qMin(at, stream.size()) + 64, "memory follows what has arrived");
    }
    invariant(bodies == plainlyCut(stream), "frames don't depend on where reads end");
    for (const QByteArray &body : std::as_const(bodies))
        checkBody(body);
    return 0;
}

// SPDX-License-Identifier: MIT
#include "HomeServer/Files/VoiceLength.h"

#include <QtEndian>

namespace orvane::homeserver {

namespace {

// The fields of the movie header box, counted from its name. Version 1 has 64-bit times.
constexpr qsizetype boxBytes = 40;

template <typename Number>
double numberAt(const char *box, qsizetype offset) {
    return static_cast<double>(qFromBigEndian<Number>(box + offset));
}

} // namespace

double voiceSeconds(const QByteArray &mp4) {
    const qsizetype start = mp4.indexOf("mvhd");
    if (start < 0 || mp4.size() - start < boxBytes)
        return 0;
    const char *box = mp4.constData() + start;
    const bool wide = box[4] == 1;
    const double scale = numberAt<quint32>(box, wide ? 24 : 16);
    const double length = wide ? numberAt<quint64>(box, 28) : numberAt<quint32>(box, 20);
    return scale > 0 ? length / scale : 0;
}

} // namespace orvane::homeserver

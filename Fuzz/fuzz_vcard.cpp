// SPDX-License-Identifier: MIT
#include "Invariant.h"
#include "Platform/VCard.h"

#include <QBuffer>
#include <QByteArray>

using namespace Qt::StringLiterals;

namespace {

QList<orvane::VCard> cardsOf(QByteArray bytes) {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return orvane::readVCards(buffer);
}

bool isUtf16(const QByteArray &bytes) {
    return bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
}

} // namespace

// Whatever stands before it, a whole card is read; and no more cards are made of the bytes than begin in
// them.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    using namespace orvane;
    const QByteArray input(reinterpret_cast<const char *>(bytes), qsizetype(size));
    const QList<VCard> cards = cardsOf(input);
    for (const VCard &card : cards)
        invariant(card.person.picture.size() <= 256 * 1024, "pictures are bounded");
    if (isUtf16(input))
        return 0;
    invariant(cards.size() <= input.toUpper().count("BEGIN"), "each card has begun");
    // The first one ends what the input has left open.
    const QByteArray known = "\r\n\r\nBEGIN:VCARD\r\nN:Doe;Jane\r\nTEL:1\r\nEND:VCARD\r\n";
    const QList<VCard> more = cardsOf(input + known + known);
    invariant(more.size() > cards.size(), "a card after the others is read");
    invariant(more.last().person == AddressBookPerson{u"Jane"_s, u"Doe"_s, {}, {{u"1"_s, {}}}, {}},
              "it is read as it stands");
    return 0;
}

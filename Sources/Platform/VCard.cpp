// SPDX-License-Identifier: MIT
#include "Platform/VCard.h"

#include "Platform/VCardLines.h"
#include "Platform/VCardProperty.h"

#include <QBuffer>
#include <QHash>
#include <QStringDecoder>

#include <array>
#include <memory>
#include <optional>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestPicture = 262'144;
constexpr qint64 largestUtf16File = 16'777'216;

struct KnownLabel {
    const char *type = nullptr;
    const char *kind = nullptr;
    QLatin1StringView label;
};

// The first that fits, since a number of most kinds is at home or at work as well.
constexpr std::array labels{
    KnownLabel{"fax", "home", "home fax"_L1},    KnownLabel{"fax", "work", "work fax"_L1},
    KnownLabel{"fax", "fax", "other fax"_L1},    KnownLabel{"pager", "pager", "pager"_L1},
    KnownLabel{"iphone", "iphone", "iPhone"_L1}, KnownLabel{"cell", "cell", "mobile"_L1},
    KnownLabel{"main", "main", "main"_L1},       KnownLabel{"work", "work", "work"_L1},
    KnownLabel{"home", "home", "home"_L1},       KnownLabel{"other", "other", "other"_L1}};

QString labelOf(const QList<QByteArray> &types) {
    for (const KnownLabel &known : labels)
        if (types.contains(known.type) && types.contains(known.kind))
            return known.label;
    return {};
}

// Address books mark their own words so: _$!<Mobile>!$_
QString ownLabel(const QString &text) {
    if (text.startsWith("_$!<"_L1) && text.endsWith(">!$_"_L1))
        return text.sliced(4).chopped(4).toLower();
    return text;
}

QString numberIn(const QString &text) {
    if (!text.startsWith("tel:"_L1, Qt::CaseInsensitive))
        return text;
    // Behind the number of RFC 3966 stand its extension and context.
    return text.sliced(4).section(u';', 0, 0);
}

/// The card that is being read.
class OpenCard {
public:
    void take(const VCardProperty &property);
    VCard finished();

private:
    void takeName(const QStringList &fields);
    void takePicture(const VCardProperty &property);

    VCard m_card;
    QString m_formattedName;
    bool m_isOrganization = false;
    /// Of each number, for the labels that are given apart.
    QList<QByteArray> m_groups;
    QHash<QByteArray, QString> m_labels;
};

void OpenCard::take(const VCardProperty &property) {
    AddressBookPerson &person = m_card.person;
    if (property.name == "N") {
        takeName(property.fields());
    } else if (property.name == "FN") {
        m_formattedName = property.fields().join(u';').trimmed();
    } else if (property.name == "ORG") {
        person.organization = property.fields().first().trimmed();
    } else if (property.name == "TEL") {
        person.numbers.append({numberIn(property.text().trimmed()), labelOf(property.types)});
        m_groups.append(property.group);
    } else if (property.name == "X-ABLABEL") {
        m_labels.insert(property.group, ownLabel(property.fields().join(u';').trimmed()));
    } else if (property.name == "PHOTO") {
        takePicture(property);
    } else if (property.name == "X-ABSHOWAS" || property.name == "KIND") {
        const QByteArray kind = property.bytes().trimmed().toLower();
        m_isOrganization = kind != "individual" && kind != "person";
    }
}

void OpenCard::takeName(const QStringList &fields) {
    m_card.person.familyName = fields.value(0).trimmed();
    m_card.person.givenName = fields.value(1).trimmed();
}

void OpenCard::takePicture(const VCardProperty &property) {
    if (!m_card.person.picture.isEmpty())
        return;
    if (property.isBase64) {
        m_card.person.picture = property.bytes().left(largestPicture);
        return;
    }
    const QByteArray address = property.bytes().trimmed();
    const qsizetype base64 = address.left(200).indexOf(";base64");
    if (address.left(5).toLower() == "data:" && base64 > 0)
        m_card.person.picture = QByteArray::fromBase64(address.sliced(base64 + 7)).left(largestPicture);
    else
        m_card.pictureAddress = QString::fromUtf8(address);
}

VCard OpenCard::finished() {
    AddressBookPerson &person = m_card.person;
    for (qsizetype index = 0; index < m_groups.size(); ++index)
        if (const QString label = m_labels.value(m_groups.at(index));
            !m_groups.at(index).isEmpty() && !label.isEmpty())
            person.numbers[index].label = label;
    // A company has a name to show, but is nobody.
    const bool isNobody = m_isOrganization || m_formattedName == person.organization;
    if (person.givenName.isEmpty() && person.familyName.isEmpty() && !isNobody)
        person.givenName = m_formattedName;
    return m_card;
}

QList<VCard> cardsIn(VCardLines lines) {
    QList<VCard> cards;
    std::unique_ptr<OpenCard> open;
    bool agentFollows = false;
    bool insideAgent = false;
    const auto finish = [&] {
        if (open)
            cards.append(open->finished());
        open.reset();
    };
    while (const std::optional<QByteArray> line = lines.next()) {
        const std::optional<VCardProperty> property = VCardProperty::parse(*line);
        if (!property)
            continue;
        if (property->name == "BEGIN") {
            insideAgent = agentFollows;
            if (!insideAgent) {
                finish();
                open = std::make_unique<OpenCard>();
            }
        } else if (property->name == "END") {
            if (!insideAgent)
                finish();
            insideAgent = false;
        } else if (open && !insideAgent) {
            open->take(*property);
        }
        // In version 2.1 a card may hold the card of somebody's secretary.
        agentFollows = open && property->name == "AGENT" && property->bytes().trimmed().isEmpty();
    }
    return cards;
}

} // namespace

QList<VCard> readVCards(QIODevice &from) {
    const QByteArray mark = from.peek(3);
    if (mark.startsWith("\xFE\xFF") || mark.startsWith("\xFF\xFE")) {
        QStringDecoder decoder(QStringDecoder::Utf16);
        const QString text = decoder.decode(from.read(largestUtf16File));
        QByteArray utf8 = text.toUtf8();
        QBuffer buffer(&utf8);
        buffer.open(QIODevice::ReadOnly);
        return cardsIn(VCardLines(buffer));
    }
    if (mark == "\xEF\xBB\xBF")
        from.skip(3);
    return cardsIn(VCardLines(from));
}

} // namespace orvane

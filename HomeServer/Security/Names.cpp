// SPDX-License-Identifier: MIT
#include "HomeServer/Security/Names.h"

#include <QList>

#include <unicode/uchar.h>
#include <unicode/uspoof.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr char32_t blankBraille = 0x2800;
constexpr char32_t nonJoiner = 0x200c;
constexpr char32_t joiner = 0x200d;

const USpoofChecker *checker() {
    static const auto made = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<USpoofChecker, decltype(&uspoof_close)> fresh(uspoof_open(&status), uspoof_close);
        uspoof_setChecks(fresh.get(), USPOOF_RESTRICTION_LEVEL | USPOOF_INVISIBLE | USPOOF_MIXED_NUMBERS,
                         &status);
        uspoof_setRestrictionLevel(fresh.get(), USPOOF_HIGHLY_RESTRICTIVE);
        if (U_FAILURE(status))
            throw std::runtime_error("no checker for names");
        return fresh;
    }();
    return made.get();
}

bool hasShape(char32_t c) {
    return c != blankBraille &&
           u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_DEFAULT_IGNORABLE_CODE_POINT) == 0;
}

} // namespace

QString nameKey(const QString &name) {
    return name.normalized(QString::NormalizationForm_KC).toCaseFolded();
}

QString nameSkeleton(const QString &name) {
    QString key = nameKey(name);
    QString skeleton(key.size() * 4 + 16, QChar(u'\0'));
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uspoof_getSkeleton(
        checker(), 0, reinterpret_cast<const UChar *>(key.utf16()), static_cast<int32_t>(key.size()),
        reinterpret_cast<UChar *>(skeleton.data()), static_cast<int32_t>(skeleton.size()), &status);
    if (U_FAILURE(status))
        return key;
    skeleton.truncate(length);
    // Once more, because what looks like a capital letter is one until now.
    return skeleton.toCaseFolded();
}

bool isHonestUsername(const QString &name) {
    const QList<uint> letters = name.toUcs4();
    const bool shaped = std::ranges::all_of(letters, [](uint c) {
        return hasShape(c) && (QChar::category(c) != QChar::Separator_Space || c == u' ');
    });
    if (!shaped || name.simplified() != name || !isShowable(name))
        return false;
    UErrorCode status = U_ZERO_ERROR;
    const QString composed = name.normalized(QString::NormalizationForm_C);
    const int32_t faults = uspoof_check2(checker(), reinterpret_cast<const UChar *>(composed.utf16()),
                                         static_cast<int32_t>(composed.size()), nullptr, &status);
    return U_SUCCESS(status) && faults == 0;
}

bool isReservedName(const QString &username) {
    const QString key = nameKey(username);
    const QString skeleton = nameSkeleton(username);
    return std::ranges::any_of(std::array{u"bot_"_s, u"ai_"_s}, [&](const QString &prefix) {
        return key.startsWith(prefix) || skeleton.startsWith(nameSkeleton(prefix));
    });
}

bool isShowable(const QString &name) {
    const QList<uint> letters = name.toUcs4();
    const bool harmless = std::ranges::all_of(letters, [](uint c) {
        const QChar::Category category = QChar::category(c);
        return category != QChar::Other_Control && category != QChar::Other_Surrogate &&
               (category != QChar::Other_Format || c == joiner || c == nonJoiner);
    });
    return harmless && std::ranges::any_of(letters, [](uint c) { return hasShape(c) && !QChar::isSpace(c); });
}

} // namespace orvane::homeserver

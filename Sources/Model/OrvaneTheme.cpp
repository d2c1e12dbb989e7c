// SPDX-License-Identifier: MIT
#include "Model/OrvaneTheme.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

struct Row {
    QLatin1StringView rawValue;
    ThemeColour background;
    ThemeColour accent;
    OrvaneTheme theme{};
    bool light = false;
};

// In the order of the enumeration, so that a theme is its own index.
constexpr Row rows[] = {
    {"OrvaneTalk"_L1, {0.05, 0.07, 0.06}, {0.0, 0.9, 0.6}, OrvaneTheme::orvane, false},
    {"Midnight"_L1, {0.08, 0.08, 0.15}, {0.49, 0.55, 1.0}, OrvaneTheme::midnight, false},
    {"Dracula"_L1, {0.16, 0.16, 0.21}, {0.74, 0.58, 0.98}, OrvaneTheme::dracula, false},
    {"Nous"_L1, {0.97, 0.97, 0.98}, {0.04, 0.45, 0.33}, OrvaneTheme::nous, true},
};

const Row &row(OrvaneTheme theme) {
    return rows[size_t(theme)];
}

} // namespace

const QList<OrvaneTheme> &allThemes() {
    static const QList<OrvaneTheme> themes{OrvaneTheme::orvane, OrvaneTheme::midnight, OrvaneTheme::dracula,
                                           OrvaneTheme::nous};
    return themes;
}

QString rawValue(OrvaneTheme theme) {
    return row(theme).rawValue;
}

std::optional<OrvaneTheme> themeFromRawValue(const QString &text) {
    for (const Row &candidate : rows) {
        if (text == candidate.rawValue)
            return candidate.theme;
    }
    return std::nullopt;
}

ThemeColour background(OrvaneTheme theme) {
    return row(theme).background;
}

ThemeColour accent(OrvaneTheme theme) {
    return row(theme).accent;
}

bool isLight(OrvaneTheme theme) {
    return row(theme).light;
}

} // namespace orvane

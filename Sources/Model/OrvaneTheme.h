// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace orvane {

/// The colour themes that a person can choose. `rawValue` is both the stored text and the label.
enum class OrvaneTheme { orvane, midnight, dracula, nous };

/// sRGB, each component from 0 to 1.
struct ThemeColour {
    double red = 0;
    double green = 0;
    double blue = 0;

    bool operator==(const ThemeColour &) const = default;
};

/// In the order in which they are offered.
const QList<OrvaneTheme> &allThemes();

QString rawValue(OrvaneTheme theme);
/// Absent for a text that names no theme.
std::optional<OrvaneTheme> themeFromRawValue(const QString &text);

ThemeColour background(OrvaneTheme theme);
ThemeColour accent(OrvaneTheme theme);
/// Whether text on the background is dark.
bool isLight(OrvaneTheme theme);

} // namespace orvane

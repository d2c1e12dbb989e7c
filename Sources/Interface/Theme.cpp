// SPDX-License-Identifier: MIT
#include "Interface/Theme.h"

#include <QFontDatabase>
#include <QFontInfo>

#include <QGuiApplication>
#include <QScreen>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr double textContrast = 4.5;
constexpr double symbolContrast = 3.0;

constexpr QRgb hues[] = {0xffb3422f, 0xff9a5b00, 0xff5c7000, 0xff137a3e,
                         0xff00757a, 0xff2565c7, 0xff7a4fd0, 0xffb53a86};

QColor colour(const ThemeColour &c) {
    return QColor::fromRgbF(float(c.red), float(c.green), float(c.blue));
}

double channel(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &c) {
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

/// `over` mixed into `ground`, by at least `share` and by as much more as it takes to stand out from
/// `against`.
QColor inkOn(const QColor &ground, const QColor &over, double share, const QColor &against, double wanted) {
    QColor ink = Theme::mix(ground, over, share);
    while (Theme::contrast(ink, against) < wanted && share < 1.0) {
        share = std::min(1.0, share + 0.01);
        ink = Theme::mix(ground, over, share);
    }
    return ink;
}

/// As much of `over` as still lets `ink` be read on the mix.
QColor groundFor(const QColor &ink, const QColor &ground, const QColor &over) {
    double share = 1.0;
    while (share > 0.0 && Theme::contrast(ink, Theme::mix(ground, over, share)) < textContrast)
        share -= 0.01;
    return Theme::mix(ground, over, share);
}

/// The faces of every text.
QFont face() {
    QFont result = QGuiApplication::font();
    // Other fonts have some of the emoji too, in one colour; without this they would be found first. The
    // desktop's font may go by an alias, which the list would step over.
    result.setFamilies({QFontInfo(result).family(), Theme::emojiFamily()});
    return result;
}

/// The desktop's text scale, which reaches applications as its dots per inch.
double textScale() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? std::clamp(screen->logicalDotsPerInch() / 96.0, 0.75, 3.0) : 1.0;
}

} // namespace

QString Theme::emojiFamily() {
    return u"Noto Color Emoji"_s;
}

Theme::Theme(QObject *parent)
    : QObject(parent)
    , fixedFont(QFontDatabase::systemFont(QFontDatabase::FixedFont)) {
    const QFont base = face();
    const auto font = [&base, scale = textScale()](int pixels, QFont::Weight weight) {
        QFont result = base;
        result.setPixelSize(int(std::lround(pixels * scale)));
        result.setWeight(weight);
        return result;
    };
    titleFont = font(22, QFont::DemiBold);
    headingFont = font(17, QFont::DemiBold);
    bodyFont = font(15, QFont::Normal);
    strongBodyFont = font(15, QFont::DemiBold);
    secondaryFont = font(13, QFont::Normal);
    strongSecondaryFont = font(13, QFont::DemiBold);
    captionFont = font(11, QFont::Normal);
    strongCaptionFont = font(11, QFont::DemiBold);
    fixedFont.setPixelSize(bodyFont.pixelSize());
    use(OrvaneTheme::orvane);
}

void Theme::use(OrvaneTheme theme) {
    const QColor white(Qt::white);
    const QColor ink = isLight(theme) ? QColor::fromRgbF(0.04F, 0.04F, 0.05F) : white;
    background = colour(orvane::background(theme));
    text = mix(background, ink, 0.92);
    surface = mix(background, text, 0.04);
    raised = mix(background, text, 0.08);
    pressed = mix(background, text, 0.12);
    divider = mix(background, text, 0.10);
    // Secondary text also stands on raised and pressed grounds; in the light theme that takes more ink.
    dimmed = inkOn(background, ink, 0.62, pressed, textContrast);
    faint = inkOn(background, ink, 0.40, pressed, symbolContrast);
    accent = colour(orvane::accent(theme));
    onAccent = contrast(white, accent) >= textContrast ? white : QColor::fromRgbF(0.02F, 0.04F, 0.03F);
    selection = mix(background, accent, 0.18);
    ownBubble = groundFor(white, background, accent);
    onOwnBubble = white;
    dimmedOnOwnBubble = inkOn(ownBubble, white, 0.80, ownBubble, textContrast);
    danger =
        inkOn(QColor::fromRgbF(1.0F, 0.33F, 0.33F), isLight(theme) ? ink : white, 0.0, surface, textContrast);
    online = QColor::fromRgbF(0.2F, 0.8F, 0.4F);
    reaction = QColor::fromRgbF(1.0F, 1.0F, 1.0F, theme == OrvaneTheme::nous ? 0.8F : 0.08F * 0.8F);
    Q_EMIT changed();
}

QColor Theme::hueOf(const QString &id) const {
    // Not the process-seeded hash: a person keeps a colour over restarts.
    uint sum = 0;
    for (const QChar c : id)
        sum = sum * 31 + c.unicode();
    return QColor::fromRgb(hues[sum % std::size(hues)]);
}

QString Theme::initialOf(const QString &name) const {
    // What people see as one character may be many, but not as many as anybody cares to send.
    constexpr qsizetype longest = 16;
    const QString start = name.trimmed().left(longest);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, start);
    const qsizetype end = finder.toNextBoundary();
    return end > 0 ? start.left(end).toUpper() : u"?"_s;
}

QFont Theme::initialFont(int avatarSize) const {
    QFont font = strongBodyFont;
    font.setPixelSize(std::max(1, int(std::lround(avatarSize * 0.42))));
    return font;
}

int Theme::columnSide(double width) const {
    constexpr double widest = 760;
    return int(std::lround(std::max(double(gap16), (width - widest) / 2)));
}

QColor Theme::mix(const QColor &ground, const QColor &over, double share) {
    const auto blend = [share](double a, double b) {
        return float(std::clamp(a + (b - a) * share, 0.0, 1.0));
    };
    return QColor::fromRgbF(blend(ground.redF(), over.redF()), blend(ground.greenF(), over.greenF()),
                            blend(ground.blueF(), over.blueF()));
}

double Theme::contrast(const QColor &a, const QColor &b) {
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

} // namespace orvane

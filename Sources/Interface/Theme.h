// SPDX-License-Identifier: MIT
#pragma once

#include "Model/OrvaneTheme.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// The tokens that every screen is drawn with: colours, type scale, spacing, radii and motion. Lengths are
/// logical pixels, times milliseconds. QML sees it as the singleton `Theme`. Main thread.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(QColor background MEMBER background NOTIFY changed)
    Q_PROPERTY(QColor surface MEMBER surface NOTIFY changed)
    Q_PROPERTY(QColor raised MEMBER raised NOTIFY changed)
    Q_PROPERTY(QColor pressed MEMBER pressed NOTIFY changed)
    Q_PROPERTY(QColor divider MEMBER divider NOTIFY changed)
    Q_PROPERTY(QColor text MEMBER text NOTIFY changed)
    Q_PROPERTY(QColor dimmed MEMBER dimmed NOTIFY changed)
    Q_PROPERTY(QColor faint MEMBER faint NOTIFY changed)
    Q_PROPERTY(QColor accent MEMBER accent NOTIFY changed)
    Q_PROPERTY(QColor onAccent MEMBER onAccent NOTIFY changed)
    Q_PROPERTY(QColor selection MEMBER selection NOTIFY changed)
    Q_PROPERTY(QColor ownBubble MEMBER ownBubble NOTIFY changed)
    Q_PROPERTY(QColor onOwnBubble MEMBER onOwnBubble NOTIFY changed)
    Q_PROPERTY(QColor dimmedOnOwnBubble MEMBER dimmedOnOwnBubble NOTIFY changed)
    Q_PROPERTY(QColor danger MEMBER danger NOTIFY changed)
    Q_PROPERTY(QColor online MEMBER online NOTIFY changed)
    Q_PROPERTY(QColor readMark MEMBER readMark CONSTANT)
    Q_PROPERTY(QColor ownReaction MEMBER ownReaction CONSTANT)
    Q_PROPERTY(QColor reaction MEMBER reaction NOTIFY changed)

    Q_PROPERTY(QFont titleFont MEMBER titleFont CONSTANT)
    Q_PROPERTY(QFont headingFont MEMBER headingFont CONSTANT)
    Q_PROPERTY(QFont bodyFont MEMBER bodyFont CONSTANT)
    Q_PROPERTY(QFont strongBodyFont MEMBER strongBodyFont CONSTANT)
    Q_PROPERTY(QFont secondaryFont MEMBER secondaryFont CONSTANT)
    Q_PROPERTY(QFont strongSecondaryFont MEMBER strongSecondaryFont CONSTANT)
    Q_PROPERTY(QFont captionFont MEMBER captionFont CONSTANT)
    Q_PROPERTY(QFont strongCaptionFont MEMBER strongCaptionFont CONSTANT)
    Q_PROPERTY(QFont fixedFont MEMBER fixedFont CONSTANT)
    Q_PROPERTY(QString emojiFamily READ emojiFamily CONSTANT)
    Q_PROPERTY(double lineHeight MEMBER lineHeight CONSTANT)

    Q_PROPERTY(int gap4 MEMBER gap4 CONSTANT)
    Q_PROPERTY(int gap8 MEMBER gap8 CONSTANT)
    Q_PROPERTY(int gap12 MEMBER gap12 CONSTANT)
    Q_PROPERTY(int gap16 MEMBER gap16 CONSTANT)
    Q_PROPERTY(int gap24 MEMBER gap24 CONSTANT)
    Q_PROPERTY(int gap32 MEMBER gap32 CONSTANT)
    Q_PROPERTY(int bubbleRadius MEMBER bubbleRadius CONSTANT)
    Q_PROPERTY(int cardRadius MEMBER cardRadius CONSTANT)
    Q_PROPERTY(int controlRadius MEMBER controlRadius CONSTANT)
    Q_PROPERTY(int tailRadius MEMBER tailRadius CONSTANT)
    Q_PROPERTY(int rowHeight MEMBER rowHeight CONSTANT)
    /// Set while the person wants nothing to move; then all durations are 0.
    Q_PROPERTY(bool reducedMotion MEMBER reducedMotion NOTIFY motionChanged)
    Q_PROPERTY(int hoverDuration READ hoverDuration NOTIFY motionChanged)
    Q_PROPERTY(int panelDuration READ panelDuration NOTIFY motionChanged)

public:
    explicit Theme(QObject *parent = nullptr);

    /// The font that draws emoji in colour.
    static QString emojiFamily();

    void use(OrvaneTheme theme);

    /// White text stands on each of these at 4.5 : 1. The same id always gets the same hue.
    Q_INVOKABLE QColor hueOf(const QString &id) const;

    /// What an avatar without a symbol says: the first character of the name as a capital, "?" without one.
    Q_INVOKABLE QString initialOf(const QString &name) const;

    /// Of the initial in an avatar of this size.
    Q_INVOKABLE QFont initialFont(int avatarSize) const;

    /// Left free on either side of the conversation's column, which is centred in a pane of this width.
    Q_INVOKABLE int columnSide(double width) const;

    /// The share of `over` in a mix with `ground`, 0 to 1, in sRGB.
    static QColor mix(const QColor &ground, const QColor &over, double share);
    /// WCAG 2 contrast ratio of two opaque colours, 1 to 21.
    static double contrast(const QColor &a, const QColor &b);

    QColor background, surface, raised, pressed, divider;
    QColor text, dimmed, faint;
    QColor accent, onAccent, selection;
    QColor ownBubble, onOwnBubble, dimmedOnOwnBubble;
    QColor danger, online;
    /// On messages that the others have read.
    QColor readMark = QColor::fromRgbF(0.0F, 0.9F, 0.6F);
    /// Grounds of reactions under own messages and under those of others.
    QColor ownReaction = QColor::fromRgbF(1.0F, 1.0F, 1.0F, 0.18F);
    QColor reaction;

    QFont titleFont, headingFont, bodyFont, strongBodyFont, secondaryFont, strongSecondaryFont, captionFont,
        strongCaptionFont, fixedFont;
    double lineHeight = 1.35;

    int gap4 = 4, gap8 = 8, gap12 = 12, gap16 = 16, gap24 = 24, gap32 = 32;
    int bubbleRadius = 16, cardRadius = 12, controlRadius = 8, tailRadius = 4;
    int rowHeight = 64;

    bool reducedMotion = false;
    int hoverDuration() const { return reducedMotion ? 0 : 120; }
    int panelDuration() const { return reducedMotion ? 0 : 180; }

Q_SIGNALS:
    void changed();
    void motionChanged();
};

} // namespace orvane

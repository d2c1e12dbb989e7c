// SPDX-License-Identifier: MIT
#include "Application/TrayImage.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace orvane {

namespace {

// It stands on a panel of the desktop, whose colours are not the window's.
constexpr QRgb bubbleColour = 0xff00996b;
constexpr QRgb badgeColour = 0xffb3261e;

/// In a square of 1.
QPainterPath bubble() {
    QPainterPath path;
    path.addRoundedRect(QRectF(0.04, 0.08, 0.92, 0.68), 0.2, 0.2);
    QPainterPath tail;
    tail.addPolygon(QPolygonF({{0.2, 0.7}, {0.2, 0.96}, {0.5, 0.7}}));
    return path.united(tail);
}

void drawBadge(QPainter &painter, const QString &label, int side) {
    const double height = 0.6 * side;
    QFont font = QGuiApplication::font();
    font.setWeight(QFont::Bold);
    font.setPixelSize(std::max(1, int(0.8 * height)));
    const double room = side - 0.3 * height;
    const double wide = QFontMetricsF(font).horizontalAdvance(label);
    if (wide > room)
        font.setPixelSize(std::max(1, int(0.8 * height * room / wide)));
    const double width = std::clamp(wide + 0.4 * height, height, double(side));
    const QRectF place(side - width, side - height, width, height);
    painter.setBrush(QColor::fromRgb(badgeColour));
    painter.drawRoundedRect(place, height / 2, height / 2);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, label);
}

} // namespace

QImage trayImage(const QString &label, int side) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(bubbleColour));
    painter.save();
    painter.scale(side, side);
    painter.drawPath(bubble());
    painter.restore();
    if (!label.isEmpty())
        drawBadge(painter, label, side);
    return image;
}

} // namespace orvane

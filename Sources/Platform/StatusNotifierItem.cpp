// SPDX-License-Identifier: MIT
#include "Platform/StatusNotifierItem.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Panels are this high, at one or two pixels a point; for others the host scales.
constexpr int sides[] = {22, 32, 48};

IconPixmap onTheBus(const QImage &drawn) {
    const QImage image = drawn.convertToFormat(QImage::Format_ARGB32);
    QByteArray pixels(image.sizeInBytes(), Qt::Uninitialized);
    qToBigEndian<quint32>(image.constBits(), image.sizeInBytes() / qsizetype(sizeof(quint32)), pixels.data());
    return {image.width(), image.height(), pixels};
}

} // namespace

StatusNotifierItem::StatusNotifierItem(Draw draw, const QString &menuPath)
    : m_draw(std::move(draw))
    , m_menu(menuPath) {
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<IconPixmaps>();
    qDBusRegisterMetaType<TrayToolTip>();
}

void StatusNotifierItem::show(qint64 count, const QString &label) {
    if (std::exchange(m_count, count) != count)
        Q_EMIT NewToolTip();
    if (std::exchange(m_label, label) != label)
        Q_EMIT NewIcon();
}

// The window may come to the front only with the desktop's token, which the toolkit reads here.
void StatusNotifierItem::ProvideXdgActivationToken(const QString &token) {
    qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

IconPixmaps StatusNotifierItem::icons() const {
    IconPixmaps icons;
    for (const int side : sides)
        icons.append(onTheBus(m_draw(m_label, side)));
    return icons;
}

TrayToolTip StatusNotifierItem::toolTip() const {
    return {{}, {}, m_title, m_label.isEmpty() ? QString() : u"%1 unread"_s.arg(m_count)};
}

} // namespace orvane

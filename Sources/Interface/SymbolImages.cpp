// SPDX-License-Identifier: MIT
#include "Interface/SymbolImages.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace orvane {

SymbolImages::SymbolImages()
    : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage SymbolImages::requestImage(const QString &id, QSize *size, const QSize &requestedSize) {
    QFile file(u":/symbols/%1.svg"_s.arg(id.section(u'/', 0, 0)));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("There is no symbol \"%s\".", qUtf8Printable(id));
    QByteArray drawing = file.readAll();
    drawing.replace("currentColor", '#' + id.section(u'/', 1, 1).toLatin1());
    QSvgRenderer renderer(drawing);
    QImage image(requestedSize.isEmpty() ? renderer.defaultSize() : requestedSize,
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    *size = image.size();
    return image;
}

} // namespace orvane

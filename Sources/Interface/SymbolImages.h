// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickImageProvider>

namespace orvane {

/// Draws the one-colour symbols of the interface: `image://symbol/<name>/<rrggbb>`, at the size that is asked
/// for. The names and their files stand in this folder's CMakeLists.txt. Any thread.
class SymbolImages : public QQuickImageProvider {
public:
    SymbolImages();

    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace orvane

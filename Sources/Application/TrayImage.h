// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

namespace orvane {

/// The program's icon for the tray, a square of `side` pixels, with the label of the badge on it unless that
/// is empty. Main thread.
QImage trayImage(const QString &label, int side);

} // namespace orvane

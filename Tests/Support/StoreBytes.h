// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

namespace orvane {

/// The column "data": bytes that a secret store has to give back as they were.
inline void storedBytesColumn() {
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all.append(char(byte));
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("every byte") << all;
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("much") << all.repeated(256);
}

} // namespace orvane

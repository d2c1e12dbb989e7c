// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

namespace orvane {

/// Made first for each row of a table that a test walks itself: after a failure it names the row.
class InRow {
public:
    explicit InRow(const QByteArray &name)
        : m_name(name) {}
    ~InRow() {
        if (QTest::currentTestFailed())
            qInfo("that was the row \"%s\"", m_name.constData());
    }
    Q_DISABLE_COPY_MOVE(InRow)

private:
    QByteArray m_name;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include <QTest>

namespace orvane {

/// Names the row of a table that a test walks itself, where it fails in it.
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

/// First in each row's turn: after a failed row no other one is looked at, since waiting is over by then.
#define IN_ROW(NAME)                                                                                         \
    if (QTest::currentTestFailed())                                                                          \
        return;                                                                                              \
    const orvane::InRow inRow(NAME)

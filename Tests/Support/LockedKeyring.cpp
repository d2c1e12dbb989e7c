// SPDX-License-Identifier: MIT
#include "Support/LockedKeyring.h"

using namespace Qt::StringLiterals;

namespace orvane {

bool LockedKeyring::start(const QByteArray &items) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(u"/usr/bin/python3"_s,
                    {u"-B"_s, QStringLiteral(LOCKED_KEYRING), QString::fromUtf8(items)});
    return says("ready\n", 20'000);
}

void LockedKeyring::end() {
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

bool LockedKeyring::says(const char *line, int milliseconds) {
    while (!m_process.canReadLine() && m_process.waitForReadyRead(milliseconds)) {
    }
    return m_process.canReadLine() && m_process.readLine() == line;
}

void LockedKeyring::answer(const QByteArray &word) {
    m_process.write(word + '\n');
    m_process.waitForBytesWritten();
}

} // namespace orvane

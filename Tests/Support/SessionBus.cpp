// SPDX-License-Identifier: MIT
#include "Support/SessionBus.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// No service folders: nothing is ever activated on this bus, least of all with the person's own keyring.
constexpr char busConfiguration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

bool SessionBus::start() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    QFile configuration(runtime + u"/bus.conf"_s);
    if (!configuration.open(QIODevice::WriteOnly))
        return false;
    configuration.write(QString::fromLatin1(busConfiguration).arg(runtime).toUtf8());
    configuration.close();

    m_daemon.start(u"dbus-daemon"_s,
                   {u"--config-file="_s + configuration.fileName(), u"--nofork"_s, u"--print-address"_s});
    if (!m_daemon.waitForReadyRead(10'000))
        return false;
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readAllStandardOutput().trimmed());
    return true;
}

void SessionBus::kill() {
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    m_daemon.kill();
    m_daemon.waitForFinished();
}

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

namespace orvane {

OwnFolders::OwnFolders() {
    if (!m_folder.isValid())
        qFatal("No temporary folder could be made: %s", qUtf8Printable(m_folder.errorString()));
    const auto own = [this](const char *name, const QString &folder) {
        const QString full = path() + u'/' + folder;
        QDir().mkpath(full);
        qputenv(name, full.toUtf8());
        return full;
    };
    own("HOME", u"home"_s);
    own("XDG_CONFIG_HOME", u"config"_s);
    own("XDG_DATA_HOME", u"data"_s);
    own("XDG_CACHE_HOME", u"cache"_s);
    const QString runtime = own("XDG_RUNTIME_DIR", u"run"_s);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtime.toUtf8() + "/no-bus");
}

ChildResult runChild(const QStringList &arguments, const QStringList &environment) {
    // A child that crashes leaves its temporary folders to us.
    const QTemporaryDir folder;
    QProcess process;
    QProcessEnvironment full = QProcessEnvironment::systemEnvironment();
    full.insert(u"TMPDIR"_s, folder.path());
    for (const QString &entry : environment)
        full.insert(entry.section(u'=', 0, 0), entry.section(u'=', 1));
    process.setProcessEnvironment(full);
    process.start(QCoreApplication::applicationFilePath(), QStringList{u"--child"_s} + arguments);
    process.waitForFinished(60'000);
    return {process.exitStatus() == QProcess::CrashExit, process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace orvane

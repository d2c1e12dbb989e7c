#include "Support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>

namespace orvane {

OwnFolders::OwnFolders() {
    if (!m_folder.isValid())
        qFatal("No temporary folder could be made: %s", qUtf8Printable(m_folder.errorString()));
    const auto own = [this](const char *name, const QString &folder) {
        const QString full = path() + QLatin1Char('/') + folder;
        QDir().mkpath(full);
        qputenv(name, full.toUtf8());
        return full;
    };
    own("HOME", QStringLiteral("home"));
    own("XDG_CONFIG_HOME", QStringLiteral("config"));
    own("XDG_DATA_HOME", QStringLiteral("data"));
    own("XDG_CACHE_HOME", QStringLiteral("cache"));
    const QString runtime = own("XDG_RUNTIME_DIR", QStringLiteral("run"));
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + runtime.toUtf8() + "/no-bus");
}

ChildResult runChild(const QStringList &arguments, const QStringList &environment) {
    // A child that crashes leaves its temporary folders to us.
    const QTemporaryDir folder;
    QProcess process;
    QProcessEnvironment full = QProcessEnvironment::systemEnvironment();
    full.insert(QStringLiteral("TMPDIR"), folder.path());
    for (const QString &entry : environment)
        full.insert(entry.section(QLatin1Char('='), 0, 0), entry.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(full);
    process.start(QCoreApplication::applicationFilePath(),
                  QStringList{QStringLiteral("--child")} + arguments);
    process.waitForFinished(60'000);
    return {process.exitStatus() == QProcess::CrashExit, process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace orvane

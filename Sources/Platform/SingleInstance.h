// SPDX-License-Identifier: MIT
#pragma once

#include <QLocalServer>
#include <QObject>

namespace orvane {

/// One running client for each data folder. Whoever starts a second one gets the window of the first. Main
/// thread.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    /// `path` names a local socket; by default one of this user and this data folder.
    explicit SingleInstance(const QString &path = defaultPath());

    /// False when another process was there before; it has then been told. Where no socket can be had, every
    /// process counts as the only one.
    bool claim();

    static QString defaultPath();

Q_SIGNALS:
    /// Somebody started the client once more.
    void windowWanted();

private:
    QString m_path;
    QLocalServer m_server;
};

} // namespace orvane

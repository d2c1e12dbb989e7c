// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>
#include <QString>

#include <optional>

namespace orvane {

/// The user's small settings: texts and integers in an INI file of the XDG config directory. Main thread. A
/// write that fails goes unnoticed.
class UserDefaults {
public:
    /// The file that all of the program shares.
    UserDefaults();
    explicit UserDefaults(const QString &path);

    std::optional<QString> text(const QString &key) const;
    /// Absent keys and texts that are no integers read as 0.
    qint64 integer(const QString &key) const;
    std::optional<QByteArray> data(const QString &key) const;
    /// On the disk when the call returns.
    void set(const QString &key, const QString &value);
    void set(const QString &key, qint64 value);
    void set(const QString &key, const QByteArray &value);
    void remove(const QString &key);

private:
    void write(const QString &key, const QVariant &value);

    QSettings m_settings;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#include "Platform/UserDefaults.h"

using namespace Qt::StringLiterals;

namespace orvane {

UserDefaults::UserDefaults()
    : m_settings(QSettings::IniFormat, QSettings::UserScope, u"OrvaneTalk"_s, u"OrvaneTalk"_s) {}

UserDefaults::UserDefaults(const QString &path)
    : m_settings(path, QSettings::IniFormat) {}

std::optional<QString> UserDefaults::text(const QString &key) const {
    const QVariant value = m_settings.value(key);
    return value.isValid() ? std::optional(value.toString()) : std::nullopt;
}

qint64 UserDefaults::integer(const QString &key) const {
    return m_settings.value(key).toLongLong();
}

std::optional<QByteArray> UserDefaults::data(const QString &key) const {
    const QVariant value = m_settings.value(key);
    return value.typeId() == QMetaType::QByteArray ? std::optional(value.toByteArray()) : std::nullopt;
}

void UserDefaults::set(const QString &key, const QString &value) {
    write(key, value);
}

void UserDefaults::set(const QString &key, qint64 value) {
    write(key, value);
}

void UserDefaults::set(const QString &key, const QByteArray &value) {
    write(key, value);
}

void UserDefaults::remove(const QString &key) {
    if (!m_settings.contains(key))
        return;
    m_settings.remove(key);
    m_settings.sync();
}

void UserDefaults::write(const QString &key, const QVariant &value) {
    m_settings.setValue(key, value);
    m_settings.sync();
}

} // namespace orvane

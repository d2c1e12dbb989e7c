#include "Platform/ReducedMotion.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <optional>

namespace orvane {

namespace {

using Groups = QMap<QString, QVariantMap>;

const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto place = QStringLiteral("/org/freedesktop/portal/desktop");
const auto settings = QStringLiteral("org.freedesktop.portal.Settings");

const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.interface");
const auto plasma = QStringLiteral("org.kde.kdeglobals.KDE");

/// Absent for a setting that says nothing of motion.
std::optional<bool> asksForLess(const QString &group, const QString &key, const QVariant &value) {
    if (group == appearance && key == QLatin1String("reduced-motion"))
        return value.toUInt() == 1;
    if (group == gnome && key == QLatin1String("enable-animations"))
        return value.typeId() == QMetaType::Bool && !value.toBool();
    if (group == plasma && key == QLatin1String("AnimationDurationFactor")) {
        bool isNumber = false;
        const double factor = value.toDouble(&isNumber);
        return isNumber && factor <= 0.0;
    }
    return std::nullopt;
}

} // namespace

ReducedMotion::ReducedMotion(const QDBusConnection &bus)
    : m_bus(bus) {
    qDBusRegisterMetaType<Groups>();
    m_bus.connect(portal, place, settings, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(portal, place, settings, QStringLiteral("ReadAll"));
    call << QStringList{appearance, gnome, plasma};
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<Groups> reply = *answer;
        answer->deleteLater();
        if (reply.isError())
            return;
        const Groups groups = reply.value();
        for (auto group = groups.cbegin(); group != groups.cend(); ++group) {
            for (auto entry = group->cbegin(); entry != group->cend(); ++entry)
                settingChanged(group.key(), entry.key(), QDBusVariant(entry.value()));
        }
    });
}

bool ReducedMotion::isWanted() const {
    return std::any_of(m_asked.cbegin(), m_asked.cend(), [](bool asked) { return asked; });
}

void ReducedMotion::settingChanged(const QString &group, const QString &key, const QDBusVariant &value) {
    const std::optional<bool> asked = asksForLess(group, key, value.variant());
    if (!asked)
        return;
    const bool before = isWanted();
    m_asked.insert(group, *asked);
    if (isWanted() != before)
        Q_EMIT changed();
}

} // namespace orvane

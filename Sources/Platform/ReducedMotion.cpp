// SPDX-License-Identifier: MIT
#include "Platform/ReducedMotion.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Groups = QMap<QString, QVariantMap>;

const auto portal = u"org.freedesktop.portal.Desktop"_s;
const auto place = u"/org/freedesktop/portal/desktop"_s;
const auto settings = u"org.freedesktop.portal.Settings"_s;

const auto appearance = u"org.freedesktop.appearance"_s;
const auto gnome = u"org.gnome.desktop.interface"_s;
const auto plasma = u"org.kde.kdeglobals.KDE"_s;

/// Absent for a setting that says nothing of motion.
std::optional<bool> asksForLess(const QString &group, const QString &key, const QVariant &value) {
    if (group == appearance && key == "reduced-motion"_L1)
        return value.toUInt() == 1;
    if (group == gnome && key == "enable-animations"_L1)
        return value.typeId() == QMetaType::Bool && !value.toBool();
    if (group == plasma && key == "AnimationDurationFactor"_L1) {
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
    m_bus.connect(portal, place, settings, u"SettingChanged"_s, this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call = QDBusMessage::createMethodCall(portal, place, settings, u"ReadAll"_s);
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

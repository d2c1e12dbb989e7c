// SPDX-License-Identifier: MIT
#include "Platform/TrayMenu.h"

#include <QDBusMetaType>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr uint revision = 1;

} // namespace

TrayMenu::TrayMenu(const QStringList &labels)
    : m_labels(labels) {
    qDBusRegisterMetaType<TrayMenuNode>();
    qDBusRegisterMetaType<TrayMenuProperties>();
    qDBusRegisterMetaType<QList<TrayMenuProperties>>();
}

TrayMenuNode TrayMenu::node(int id) const {
    if (id == 0)
        return {id, {{u"children-display"_s, u"submenu"_s}}, {}};
    return {id, {{u"label"_s, m_labels.at(id - 1)}}, {}};
}

uint TrayMenu::GetLayout(int parent, int depth, const QStringList &, TrayMenuNode &layout) {
    if (parent < 0 || parent > m_labels.size()) {
        sendErrorReply(QDBusError::InvalidArgs);
        return revision;
    }
    layout = node(parent);
    if (parent == 0 && depth != 0) {
        for (int id = 1; id <= m_labels.size(); ++id)
            layout.children.append(QVariant::fromValue(node(id)));
    }
    return revision;
}

QList<TrayMenuProperties> TrayMenu::GetGroupProperties(const QList<int> &ids, const QStringList &) {
    QList<TrayMenuProperties> found;
    for (int id = 0; id <= m_labels.size(); ++id) {
        if (ids.isEmpty() || ids.contains(id))
            found.append({id, node(id).properties});
    }
    return found;
}

QDBusVariant TrayMenu::GetProperty(int id, const QString &name) {
    const QVariant value = id >= 0 && id <= m_labels.size() ? node(id).properties.value(name) : QVariant();
    if (!value.isValid())
        sendErrorReply(QDBusError::InvalidArgs);
    return QDBusVariant(value);
}

void TrayMenu::Event(int id, const QString &event, const QDBusVariant &, uint) {
    if (event == "clicked"_L1 && id >= 1 && id <= m_labels.size())
        Q_EMIT chosen(id - 1);
}

} // namespace orvane

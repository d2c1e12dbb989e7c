// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/BusStructure.h"

#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace orvane {

using namespace Qt::StringLiterals;

/// An entry with those below it, each a TrayMenuNode.
struct TrayMenuNode {
    int id = 0;
    QVariantMap properties;
    QVariantList children;

    static auto fields(auto &self) { return std::tie(self.id, self.properties, self.children); }
};

struct TrayMenuProperties {
    int id = 0;
    QVariantMap properties;

    static auto fields(auto &self) { return std::tie(self.id, self.properties); }
};

/// The menu of the tray icon, which the host draws: by the names of com.canonical.dbusmenu. It never changes.
/// Main thread.
class TrayMenu : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version MEMBER m_version CONSTANT)
    Q_PROPERTY(QString Status MEMBER m_status CONSTANT)

public:
    explicit TrayMenu(const QStringList &labels);

public Q_SLOTS:
    // Entry 0 is the menu itself; all properties are sent, whichever are asked for.
    Q_SCRIPTABLE uint GetLayout(int parent, int depth, const QStringList &names,
                                orvane::TrayMenuNode &layout);
    Q_SCRIPTABLE QList<orvane::TrayMenuProperties> GetGroupProperties(const QList<int> &ids,
                                                                      const QStringList &names);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString &name);
    Q_SCRIPTABLE void Event(int id, const QString &event, const QDBusVariant &data, uint time);
    Q_SCRIPTABLE bool AboutToShow(int) { return false; }

Q_SIGNALS:
    /// By the place among the labels.
    void chosen(int index);

private:
    TrayMenuNode node(int id) const;

    uint m_version = 2;
    QString m_status = u"normal"_s;
    QStringList m_labels;
};

} // namespace orvane

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/BusStructure.h"

#include <QDBusObjectPath>
#include <QImage>
#include <QList>
#include <QObject>

#include <functional>

namespace orvane {

using namespace Qt::StringLiterals;

/// One size of an icon on the bus: 32 bits a pixel, ARGB, the highest byte first.
struct IconPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    static auto fields(auto &self) { return std::tie(self.width, self.height, self.pixels); }
};
using IconPixmaps = QList<IconPixmap>;

struct TrayToolTip {
    QString iconName;
    IconPixmaps icons;
    QString title;
    /// Markup.
    QString text;

    static auto fields(auto &self) { return std::tie(self.iconName, self.icons, self.title, self.text); }
};

/// What tray hosts read and call, by the names of org.kde.StatusNotifierItem. Main thread.
class StatusNotifierItem : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER m_category CONSTANT)
    Q_PROPERTY(QString Id MEMBER m_id CONSTANT)
    Q_PROPERTY(QString Title MEMBER m_title CONSTANT)
    Q_PROPERTY(QString Status MEMBER m_status CONSTANT)
    Q_PROPERTY(QList<orvane::IconPixmap> IconPixmap READ icons NOTIFY NewIcon)
    Q_PROPERTY(orvane::TrayToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(bool ItemIsMenu MEMBER m_itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER m_menu CONSTANT)

public:
    /// Makes the icon, a square of so many pixels, with the badge's label on it where that is not empty.
    using Draw = std::function<QImage(const QString &label, int side)>;
    StatusNotifierItem(Draw draw, const QString &menuPath);

    void show(qint64 count, const QString &label);

public Q_SLOTS:
    // Called by the host, with the place on the screen.
    Q_SCRIPTABLE void Activate(int, int) { Q_EMIT activated(); }
    Q_SCRIPTABLE void SecondaryActivate(int, int) { Q_EMIT activated(); }
    /// Only by hosts that can't show the menu.
    Q_SCRIPTABLE void ContextMenu(int, int) { Q_EMIT activated(); }
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString &token);

Q_SIGNALS:
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();
    void activated();

private:
    IconPixmaps icons() const;
    TrayToolTip toolTip() const;

    Draw m_draw;
    QString m_category = u"Communications"_s;
    QString m_id = u"com.orvanetalk.OrvaneTalk"_s;
    QString m_title = u"OrvaneTalk"_s;
    QString m_status = u"Active"_s;
    bool m_itemIsMenu = false;
    QDBusObjectPath m_menu;
    qint64 m_count = 0;
    QString m_label;
};

} // namespace orvane

#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QString>

namespace kivo {

/// Who keeps the list of the session's items and status areas.
inline constexpr auto watcherService = "org.kde.StatusNotifierWatcher";
inline constexpr auto watcherPath = "/StatusNotifierWatcher";

/// A picture as the status item protocol carries it, D-Bus type (iiay): 32 bits a pixel, alpha,
/// red, green, blue in network byte order, not premultiplied, rows without padding.
struct IconPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    static IconPixmap from(const QImage& image);
};
using IconPixmaps = QList<IconPixmap>;

/// D-Bus type (sa(iiay)ss): an icon by name, an icon by pixels, a title, and text below it.
struct StatusToolTip {
    QString iconName;
    IconPixmaps icon;
    QString title;
    QString text;
};

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip);

/// Makes the types above known to QtDBus; any number of times.
void registerStatusItemTypes();

} // namespace kivo

Q_DECLARE_METATYPE(kivo::IconPixmap)
Q_DECLARE_METATYPE(kivo::StatusToolTip)

#include "KivoMenuBar/StatusItemTypes.h"

#include <QDBusMetaType>
#include <QtEndian>

namespace kivo {

IconPixmap IconPixmap::from(const QImage& image) {
    const QImage source = image.convertToFormat(QImage::Format_ARGB32);
    const qsizetype rowBytes = qsizetype{4} * source.width();
    QByteArray pixels(rowBytes * source.height(), Qt::Uninitialized);
    for (int row = 0; row < source.height(); ++row)
        qToBigEndian<quint32>(source.constScanLine(row), source.width(),
                              pixels.data() + row * rowBytes);
    return {source.width(), source.height(), pixels};
}

QDBusArgument& operator<<(QDBusArgument& argument, const IconPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IconPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.icon >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

void registerStatusItemTypes() {
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<IconPixmaps>();
    qDBusRegisterMetaType<StatusToolTip>();
}

} // namespace kivo

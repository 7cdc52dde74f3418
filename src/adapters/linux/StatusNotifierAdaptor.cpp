#include "adapters/linux/StatusNotifierAdaptor.h"

#include <QDBusMetaType>
#include <QtEndian>

namespace tavrine {

StatusNotifierPixmap StatusNotifierPixmap::fromImage(const QImage &image) {
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierPixmap pixmap{argb.width(), argb.height(),
                                QByteArray(qsizetype{argb.width()} * argb.height() * 4, '\0')};
    for (int y = 0; y < argb.height(); ++y)
        qToBigEndian<quint32>(argb.constScanLine(y), argb.width(),
                              pixmap.argb.data() + qsizetype{4} * y * argb.width());
    return pixmap;
}

QImage StatusNotifierPixmap::toImage() const {
    if (width <= 0 || height <= 0 || argb.size() != qsizetype{4} * width * height)
        return {};
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        qFromBigEndian<quint32>(argb.constData() + qsizetype{4} * y * width, width, image.scanLine(y));
    return image;
}

StatusNotifierAdaptor::StatusNotifierAdaptor(QObject *exported, OnPress onPress, OnPress onSecondaryPress)
    : QDBusAbstractAdaptor(exported), m_onPress(std::move(onPress)), m_onSecondaryPress(std::move(onSecondaryPress)) {
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmaps>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
}

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierPixmap &pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.argb;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierPixmap &pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.argb;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.iconPixmap << toolTip.title << toolTip.description;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.iconPixmap >> toolTip.title >> toolTip.description;
    argument.endStructure();
    return argument;
}

} // namespace tavrine

#include "adapters/heif/HeifImageHandler.h"

#include <QImageIOPlugin>

namespace tavrine {

/// HEIF pictures for the toolkit's image readers.
class HeifImagePlugin final : public QImageIOPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QImageIOHandlerFactoryInterface_iid FILE "heif.json")

public:
    [[nodiscard]] Capabilities capabilities(QIODevice *device, const QByteArray &format) const override {
        if (format == "heic" || format == "heif")
            return CanRead;
        return format.isEmpty() && HeifImageHandler::canRead(device) ? CanRead : Capabilities();
    }
    [[nodiscard]] QImageIOHandler *create(QIODevice *device, const QByteArray &format) const override {
        auto *handler = new HeifImageHandler;
        handler->setDevice(device);
        handler->setFormat(format.isEmpty() ? QByteArrayLiteral("heic") : format);
        return handler;
    }
};

} // namespace tavrine

#include "HeifImagePlugin.moc"

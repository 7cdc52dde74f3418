#pragma once

#include <QByteArray>
#include <QImageIOHandler>
#include <QSize>

#include <memory>

struct heif_context;
struct heif_image_handle;

namespace tavrine {

/// Reads one HEIF picture, as phones take them, upright. What is broken, or too large for the limit of the process,
/// reads as nothing. One instance for one picture, on the thread of its reader.
class HeifImageHandler final : public QImageIOHandler {
public:
    static constexpr qint64 largestFile = 256 * 1024 * 1024;

    HeifImageHandler();
    ~HeifImageHandler() override;

    [[nodiscard]] static bool canRead(QIODevice *device);
    [[nodiscard]] bool canRead() const override;
    bool read(QImage *image) override;
    [[nodiscard]] QVariant option(ImageOption option) const override;
    [[nodiscard]] bool supportsOption(ImageOption option) const override;

private:
    struct FreeContext {
        void operator()(heif_context *context) const;
    };
    struct FreeHandle {
        void operator()(heif_image_handle *handle) const;
    };
    bool open();
    [[nodiscard]] QSize size() const;

    QByteArray m_data; // the context reads from it
    std::unique_ptr<heif_context, FreeContext> m_context;
    std::unique_ptr<heif_image_handle, FreeHandle> m_picture;
    bool m_isOpened = false;
};

} // namespace tavrine

#pragma once

#include "base/Descriptor.h"
#include "ports/ScreenStream.h"

#include <QImage>
#include <QPainter>

#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include <sys/mman.h>

namespace tavrine::test {

/// Makes frames as a stream does: pictures in a few buffers of memory that other processes can map.
class ScreenFrames {
public:
    explicit ScreenFrames(QSize size, int buffers = 3)
        : m_size(size), m_picture(size, QImage::Format_RGB32), m_buffers(std::make_shared<std::vector<Buffer>>()) {
        m_picture.fill(Qt::black);
        for (int i = 0; i < buffers; ++i)
            m_buffers->emplace_back(static_cast<std::size_t>(m_picture.sizeInBytes()));
    }

    /// The next frame: what `paint` changes within `changed`. It takes the next buffer, held or not.
    std::shared_ptr<const ScreenFrame> next(const QRect &changed, const std::function<void(QPainter &painter)> &paint) {
        QPainter painter(&m_picture);
        painter.setClipRect(changed);
        paint(painter);
        painter.end();
        auto frame = std::make_shared<ScreenFrame>();
        frame->buffer = static_cast<int>(m_number % m_buffers->size());
        const Buffer &buffer = m_buffers->at(static_cast<std::size_t>(frame->buffer));
        std::memcpy(buffer.address, m_picture.constBits(), static_cast<std::size_t>(m_picture.sizeInBytes()));
        frame->memory = buffer.memory.number();
        frame->size = m_size;
        frame->bytesPerLine = static_cast<int>(m_picture.bytesPerLine());
        frame->number = ++m_number;
        frame->changed = {changed};
        return std::shared_ptr<const ScreenFrame>(frame.get(), [frame, buffers = m_buffers](const ScreenFrame *) {});
    }
    /// One that is all of a colour.
    std::shared_ptr<const ScreenFrame> plain(const QColor &color) {
        const QRect whole({}, m_size);
        return next(whole, [&](QPainter &painter) { painter.fillRect(whole, color); });
    }
    [[nodiscard]] const QImage &picture() const { return m_picture; }

private:
    struct Buffer {
        explicit Buffer(std::size_t size) : memory(::memfd_create("frame", MFD_CLOEXEC)), length(size) {
            if (::ftruncate(memory.number(), static_cast<off_t>(size)) == 0)
                address = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, memory.number(), 0);
        }
        Buffer(Buffer &&other) noexcept
            : memory(std::move(other.memory)), length(other.length), address(std::exchange(other.address, nullptr)) {}
        ~Buffer() {
            if (address)
                ::munmap(address, length);
        }
        Descriptor memory;
        std::size_t length;
        void *address = nullptr;
    };

    QSize m_size;
    QImage m_picture;
    std::shared_ptr<std::vector<Buffer>> m_buffers;
    std::uint64_t m_number = 0;
};

} // namespace tavrine::test

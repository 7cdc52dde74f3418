#include "adapters/x11/frozen/SharedPixels.h"

#include "adapters/x11/frozen/ScreenMap.h"

#include <algorithm>

#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>

namespace tavrine {
namespace {

constexpr quint32 allPlanes = ~0U;
/// Of picture in one request, where memory is not shared: under the limit that every server has.
constexpr int pieceBytes = 192 * 1024;

} // namespace

SharedPixels::SharedPixels(XcbLink &link, PixelLayout layout) : m_link(link), m_layout(layout) {
    const QSize size = screenRect(link).size();
    m_pixels = {nullptr, size.width(), size.height()};
    m_bytes = static_cast<size_t>(size.width()) * static_cast<size_t>(size.height()) * sizeof(quint32);
}

SharedPixels::~SharedPixels() {
    if (m_segment)
        xcb_shm_detach(m_link.connection(), m_segment);
    if (m_pixels.data)
        ::munmap(m_pixels.data, m_bytes);
}

std::unique_ptr<SharedPixels> SharedPixels::make(XcbLink &link) {
    const auto layout =
        PixelLayout::forVisual(*xcb_get_setup(link.connection()), link.screen(), link.screen().root_visual);
    if (!layout)
        return nullptr;
    std::unique_ptr<SharedPixels> shared(new SharedPixels(link, *layout));
    if (layout->isPlain() && shared->shareWithServer())
        return shared;
    void *const memory = ::mmap(nullptr, shared->m_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return nullptr;
    shared->m_pixels.data = static_cast<quint32 *>(memory);
    return shared;
}

bool SharedPixels::shareWithServer() {
    auto *const connection = m_link.connection();
    const auto *const extension = xcb_get_extension_data(connection, &xcb_shm_id);
    if (!extension || !extension->present)
        return false;
    const quint32 segment = m_link.newId();
    const auto answer = m_link.reply<xcb_shm_create_segment_reply_t>(
        xcb_shm_create_segment(connection, segment, static_cast<quint32>(m_bytes), 0));
    if (!answer || answer->nfd != 1)
        return false; // the server is older than this or on another machine
    const int descriptor = *xcb_shm_create_segment_reply_fds(connection, answer.get());
    void *const memory = ::mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    if (memory == MAP_FAILED) {
        xcb_shm_detach(connection, segment);
        return false;
    }
    m_pixels.data = static_cast<quint32 *>(memory);
    m_segment = segment;
    return true;
}

void SharedPixels::beginReading() {
    auto *const connection = m_link.connection();
    const auto width = static_cast<quint16>(m_pixels.width);
    const auto height = static_cast<quint16>(m_pixels.height);
    // One request, so that the picture is of one moment.
    if (m_segment)
        m_reading = xcb_shm_get_image(connection, m_link.root(), 0, 0, width, height, allPlanes,
                                      XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, 0)
                        .sequence;
    else
        m_reading = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_link.root(), 0, 0, width, height, allPlanes)
                        .sequence;
    xcb_flush(connection);
}

bool SharedPixels::finishReading() {
    if (!m_segment)
        return takeReply();
    if (!m_link.reply<xcb_shm_get_image_reply_t>(xcb_shm_get_image_cookie_t{m_reading}))
        return false;
    ::madvise(m_pixels.data, m_bytes, MADV_POPULATE_READ); // a hint; without it the pages come one by one
    return true;
}

void SharedPixels::prepareForPainting() {
    ::madvise(m_pixels.data, m_bytes, MADV_POPULATE_WRITE);
}

bool SharedPixels::takeReply() {
    const int lineBytes = m_layout.lineBytes(m_pixels.width);
    const auto answer = m_link.reply<xcb_get_image_reply_t>(xcb_get_image_cookie_t{m_reading});
    if (!answer || qint64{xcb_get_image_data_length(answer.get())} < qint64{lineBytes} * m_pixels.height)
        return false;
    for (int y = 0; y < m_pixels.height; ++y)
        m_layout.toPlain(xcb_get_image_data(answer.get()) + qsizetype{y} * lineBytes, m_pixels.line(y), m_pixels.width);
    return true;
}

void SharedPixels::put(xcb_window_t window, xcb_gcontext_t context, const QRect &area) {
    const QRect part = area.intersected(m_pixels.rect());
    if (part.isEmpty())
        return;
    if (!m_segment)
        return putInPieces(window, context, part);
    xcb_shm_put_image(m_link.connection(), window, context, static_cast<quint16>(m_pixels.width),
                      static_cast<quint16>(m_pixels.height), static_cast<quint16>(part.x()),
                      static_cast<quint16>(part.y()), static_cast<quint16>(part.width()),
                      static_cast<quint16>(part.height()), static_cast<qint16>(part.x()), static_cast<qint16>(part.y()),
                      m_layout.depth(), XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
}

void SharedPixels::putInPieces(xcb_window_t window, xcb_gcontext_t context, const QRect &area) {
    const int lineBytes = m_layout.lineBytes(area.width());
    const int linesAtOnce = std::max(1, pieceBytes / lineBytes);
    std::vector<quint8> piece;
    for (int top = area.top(); top <= area.bottom(); top += linesAtOnce) {
        const int lines = std::min(linesAtOnce, area.bottom() - top + 1);
        piece.assign(static_cast<size_t>(lineBytes) * static_cast<size_t>(lines), 0);
        for (int y = 0; y < lines; ++y)
            m_layout.fromPlain(m_pixels.line(top + y) + area.x(), piece.data() + qsizetype{y} * lineBytes,
                               area.width());
        xcb_put_image(m_link.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                      static_cast<quint16>(area.width()), static_cast<quint16>(lines), static_cast<qint16>(area.x()),
                      static_cast<qint16>(top), 0, m_layout.depth(), static_cast<quint32>(piece.size()), piece.data());
    }
}

} // namespace tavrine

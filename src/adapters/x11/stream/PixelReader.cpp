#include "adapters/x11/stream/PixelReader.h"

#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/shm.h>

namespace tavrine {
namespace {

constexpr quint32 allPlanes = ~0U;

/// Descriptors go over a socket of this machine only; sending one over another ends the connection.
bool isLocal(const XcbLink &link) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return ::getpeername(link.descriptor(), reinterpret_cast<sockaddr *>(&address), &length) == 0 &&
           address.ss_family == AF_UNIX;
}

bool canShare(XcbLink &link) {
    if (!isLocal(link) || !link.extension(xcb_shm_id))
        return false;
    const auto version = link.reply<xcb_shm_query_version_reply_t>(xcb_shm_query_version(link.connection()));
    constexpr int firstWithDescriptors = 2; // 1.2
    return version && (version->major_version > 1 ||
                       (version->major_version == 1 && version->minor_version >= firstWithDescriptors));
}

template <class Number>
std::uint16_t word(Number number) {
    return static_cast<std::uint16_t>(number);
}

} // namespace

PixelReader::PixelReader(XcbLink &link, PixelLayout layout)
    : m_link(link), m_layout(layout), m_isSharing(layout.isPlain() && canShare(link)) {}

PixelReader::~PixelReader() = default; // the connection's end takes the segments back

quint32 PixelReader::share(const FrameMemory &memory) {
    if (m_wasLate) // each question would wait as long
        return 0;
    const int copy = ::fcntl(memory.descriptor(), F_DUPFD_CLOEXEC, 3); // the library closes what it sends
    if (copy < 0)
        return 0;
    const quint32 segment = m_link.newId();
    const auto isRefused = m_link.isRefused(xcb_shm_attach_fd_checked(m_link.connection(), segment, copy, 0));
    if (isRefused == false)
        return segment;
    if (isRefused) { // a server that refuses goes on refusing
        m_isSharing = false;
    } else { // it may come to it later, and is asked anew with the next reads
        m_wasLate = true;
        xcb_shm_detach(m_link.connection(), segment);
    }
    return 0;
}

bool PixelReader::hasScratch(qsizetype pixels, QSize whole) {
    if (!m_scratch)
        m_scratch = FrameMemory::make(whole);
    if (m_scratch && m_scratchSegment == 0)
        m_scratchSegment = share(*m_scratch);
    return m_scratchSegment != 0 && m_scratchUsed + pixels <= qsizetype{whole.width()} * whole.height();
}

void PixelReader::read(xcb_drawable_t drawable, const QRect &from, FrameBuffers::Buffer &buffer, QPoint to) {
    if (from.isEmpty())
        return;
    if (m_isSharing && buffer.segment == 0)
        buffer.segment = share(*buffer.memory);
    if (m_isSharing && buffer.segment != 0)
        return readShared(drawable, from, buffer, to);
    const auto cookie =
        xcb_get_image(m_link.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(from.x()),
                      static_cast<std::int16_t>(from.y()), word(from.width()), word(from.height()), allPlanes);
    m_readings.push_back({cookie.sequence, buffer.memory->pixels(), QRect(to, from.size())});
}

/// The server writes line after line without gaps: what is as wide as the picture can be written to its place, what is
/// narrower goes another way.
void PixelReader::readShared(xcb_drawable_t drawable, const QRect &from, FrameBuffers::Buffer &buffer, QPoint to) {
    const PixelsToPaint target = buffer.memory->pixels();
    const qsizetype pixels = qsizetype{from.width()} * from.height();
    Reading reading{.sequence = 0, .target = target, .place = QRect(to, from.size()), .scratch = -1, .isShared = true};
    quint32 segment = buffer.segment;
    qsizetype offset = qsizetype{to.y()} * target.width;
    if (from.width() != target.width) {
        if (!hasScratch(pixels, QSize(target.width, target.height))) {
            const auto cookie = xcb_get_image(m_link.connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable,
                                              static_cast<std::int16_t>(from.x()), static_cast<std::int16_t>(from.y()),
                                              word(from.width()), word(from.height()), allPlanes);
            m_readings.push_back({cookie.sequence, target, reading.place});
            return;
        }
        segment = m_scratchSegment;
        offset = reading.scratch = std::exchange(m_scratchUsed, m_scratchUsed + pixels);
    }
    reading.sequence =
        xcb_shm_get_image(m_link.connection(), drawable, static_cast<std::int16_t>(from.x()),
                          static_cast<std::int16_t>(from.y()), word(from.width()), word(from.height()), allPlanes,
                          XCB_IMAGE_FORMAT_Z_PIXMAP, segment, static_cast<quint32>(offset * qsizetype{sizeof(quint32)}))
            .sequence;
    m_readings.push_back(reading);
}

bool PixelReader::finish() {
    bool isComplete = true;
    m_link.flush();
    for (const Reading &reading : m_readings)
        isComplete = isThere(reading) && isComplete; // every answer is taken, or it would wait for ever
    m_readings.clear();
    m_scratchUsed = 0;
    m_wasLate = false;
    return isComplete;
}

bool PixelReader::isThere(const Reading &reading) {
    const QRect &place = reading.place;
    if (reading.isShared) {
        if (!m_link.reply<xcb_shm_get_image_reply_t>(xcb_shm_get_image_cookie_t{reading.sequence}))
            return false;
        for (int y = 0; y < place.height() && reading.scratch >= 0; ++y)
            std::memcpy(reading.target.line(place.y() + y) + place.x(),
                        m_scratch->pixels().data + reading.scratch + qsizetype{y} * place.width(),
                        static_cast<size_t>(place.width()) * sizeof(quint32));
        return true;
    }
    const auto answer = m_link.reply<xcb_get_image_reply_t>(xcb_get_image_cookie_t{reading.sequence});
    const qsizetype lineBytes = m_layout.lineBytes(place.width());
    if (!answer || qsizetype{xcb_get_image_data_length(answer.get())} < lineBytes * place.height())
        return false;
    for (int y = 0; y < place.height(); ++y)
        m_layout.toPlain(xcb_get_image_data(answer.get()) + lineBytes * y,
                         reading.target.line(place.y() + y) + place.x(), place.width());
    return true;
}

} // namespace tavrine

#include "programs/screencapture/PngEncoder.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <optional>
#include <thread>

#include <zlib.h>

namespace tavrine {
namespace {

constexpr int bytesPerPixel = 3;
constexpr double plainPixelsPerMetre = 96 / 0.0254;
// Small enough to share out evenly, large enough that the seams cost nothing (under 0.1 % of the file).
constexpr qint64 bandBytes = qint64{512} * 1024;
// A band in which this share of pixels repeats the one to its left or above is drawn by programs, not by nature.
constexpr int drawnPercent = 70;

void putWord(std::vector<quint8> &to, quint32 value) {
    for (const int shift : {24, 16, 8, 0})
        to.push_back(static_cast<quint8>(value >> shift));
}

/// Closes a chunk whose length and name stand at the beginning of `chunk`.
void finishChunk(std::vector<quint8> &chunk) {
    const auto length = static_cast<quint32>(chunk.size() - 8);
    for (size_t i = 0; i < 4; ++i)
        chunk[i] = static_cast<quint8>(length >> (24 - 8 * i));
    putWord(chunk, static_cast<quint32>(crc32_z(0, chunk.data() + 4, chunk.size() - 4)));
}

std::vector<quint8> beginChunk(const char (&name)[5]) {
    std::vector<quint8> chunk(8);
    std::copy(name, name + 4, chunk.begin() + 4);
    return chunk;
}

std::vector<quint8> head(QSize size, double scale) {
    std::vector<quint8> bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    auto chunk = beginChunk("IHDR");
    putWord(chunk, static_cast<quint32>(size.width()));
    putWord(chunk, static_cast<quint32>(size.height()));
    for (const quint8 byte : {8, 2, 0, 0, 0}) // bits, red-green-blue, deflate, the five filters, not interlaced
        chunk.push_back(byte);
    finishChunk(chunk);
    bytes.insert(bytes.end(), chunk.begin(), chunk.end());
    auto physical = beginChunk("pHYs");
    const auto perMetre = static_cast<quint32>(std::lround(scale * plainPixelsPerMetre));
    putWord(physical, perMetre);
    putWord(physical, perMetre);
    physical.push_back(1); // the metre
    finishChunk(physical);
    bytes.insert(bytes.end(), physical.begin(), physical.end());
    return bytes;
}

/// What a run of lines becomes.
struct Band {
    std::vector<quint8> chunk;
    uLong sum = 0; ///< of the bytes before they were packed
    z_off_t length = 0;
};

class BandPacker {
public:
    BandPacker(PixelsToRead picture, const QRect &area) : m_picture(picture), m_area(area) {}

    [[nodiscard]] std::optional<Band> pack(int firstLine, int lines, bool isFirst, bool isLast) {
        const bool isDrawn = isDrawnByProgram(firstLine, lines);
        fillRaw(firstLine, lines);
        Band band;
        band.length = static_cast<z_off_t>(m_raw.size());
        band.sum = adler32_z(adler32_z(0, nullptr, 0), m_raw.data(), m_raw.size());
        band.chunk = beginChunk("IDAT");
        if (isFirst)
            for (const quint8 byte : {0x78, 0x01}) // deflate, packed fast
                band.chunk.push_back(byte);
        z_stream stream{};
        // What nature drew hardly packs and takes ten times as long. The file is read at once and removed, so that its
        // size costs nothing and packing would only delay both. Measured, see docs/decisions.
        if (deflateInit2(&stream, isDrawn ? 1 : Z_NO_COMPRESSION, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL,
                         Z_DEFAULT_STRATEGY) != Z_OK)
            return std::nullopt;
        const size_t begin = band.chunk.size();
        constexpr size_t roomForSeam = 64;
        band.chunk.resize(begin + deflateBound(&stream, static_cast<uLong>(m_raw.size())) + roomForSeam);
        stream.next_in = m_raw.data();
        stream.avail_in = static_cast<uInt>(m_raw.size());
        stream.next_out = band.chunk.data() + begin;
        stream.avail_out = static_cast<uInt>(band.chunk.size() - begin);
        // Between bands the stream is brought to a whole byte, so that they can be joined.
        const int result = deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
        band.chunk.resize(begin + stream.total_out);
        deflateEnd(&stream);
        if (result != (isLast ? Z_STREAM_END : Z_OK) || stream.avail_in != 0)
            return std::nullopt;
        finishChunk(band.chunk);
        return band;
    }

private:
    [[nodiscard]] const quint32 *line(int y) const { return m_picture.line(m_area.y() + y) + m_area.x(); }

    [[nodiscard]] bool isDrawnByProgram(int firstLine, int lines) const {
        qint64 looked = 0;
        qint64 same = 0;
        for (int y = firstLine + 1; y < firstLine + lines; y += 4, looked += m_area.width() - 1)
            for (int x = 1; x < m_area.width(); ++x)
                same +=
                    ((line(y)[x] ^ line(y)[x - 1]) & 0xffffff) == 0 || ((line(y)[x] ^ line(y - 1)[x]) & 0xffffff) == 0;
        return same * 100 >= looked * drawnPercent; // so is what is too narrow to tell
    }

    void fillRaw(int firstLine, int lines) {
        constexpr quint8 withoutFilter = 0;
        const size_t lineBytes = static_cast<size_t>(m_area.width()) * bytesPerPixel + 1;
        m_raw.resize(lineBytes * static_cast<size_t>(lines));
        for (int i = 0; i < lines; ++i) {
            quint8 *to = m_raw.data() + lineBytes * static_cast<size_t>(i);
            const quint32 *const from = line(firstLine + i);
            *to++ = withoutFilter;
            for (int x = 0; x < m_area.width(); ++x, to += bytesPerPixel) {
                to[0] = static_cast<quint8>(from[x] >> 16);
                to[1] = static_cast<quint8>(from[x] >> 8);
                to[2] = static_cast<quint8>(from[x]);
            }
        }
    }

    PixelsToRead m_picture;
    QRect m_area;
    std::vector<quint8> m_raw;
};

} // namespace

FilePieces encodePng(PixelsToRead picture, const QRect &area, double scale, int threads,
                     const std::function<bool()> &isStopped) {
    if (area.isEmpty() || !picture.rect().contains(area))
        return {};
    const qint64 lineBytes = qint64{area.width()} * bytesPerPixel + 1;
    const int linesPerBand = static_cast<int>(std::clamp<qint64>(bandBytes / lineBytes, 1, area.height()));
    const int bandCount = (area.height() + linesPerBand - 1) / linesPerBand;
    std::vector<Band> bands(static_cast<size_t>(bandCount));
    std::atomic<int> next = 0;
    std::atomic<bool> hasFailed = false;
    const auto work = [&] {
        BandPacker packer(picture, area);
        for (int i = next++; i < bandCount && !hasFailed; i = next++) {
            const int first = i * linesPerBand;
            auto band = isStopped() ? std::nullopt
                                    : packer.pack(first, std::min(linesPerBand, area.height() - first), i == 0,
                                                  i == bandCount - 1);
            if (band)
                bands[static_cast<size_t>(i)] = std::move(*band);
            else
                hasFailed = true;
        }
    };
    std::vector<std::thread> others;
    for (int i = 1; i < std::min(threads, bandCount); ++i)
        others.emplace_back(work);
    work();
    for (std::thread &other : others)
        other.join();
    if (hasFailed)
        return {};

    FilePieces pieces{head(area.size(), scale)};
    uLong sum = adler32_z(0, nullptr, 0);
    for (Band &band : bands) {
        sum = adler32_combine(sum, band.sum, band.length);
        pieces.push_back(std::move(band.chunk));
    }
    auto tail = beginChunk("IDAT");
    putWord(tail, static_cast<quint32>(sum));
    finishChunk(tail);
    auto end = beginChunk("IEND");
    finishChunk(end);
    tail.insert(tail.end(), end.begin(), end.end());
    pieces.push_back(std::move(tail));
    return pieces;
}

} // namespace tavrine

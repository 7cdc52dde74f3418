#pragma once

#include "adapters/frozen/Pixels.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrine {

/// How a file begins that hands a picture of all screens over. The parts follow, then the picture as large as the plane
/// that the screens lie on, then the pixels of each part; all pixels as `Pixels` has them. Of one machine and one
/// moment: as its numbers lie in memory.
struct PictureFileHead {
    static constexpr std::array<char, 8> rightMark{'T', 'a', 'v', 'P', 'i', 'c', 't', '2'};

    std::array<char, 8> mark = rightMark;
    qint32 width = 0; ///< of the plane
    qint32 height = 0;
    qint32 pointerX = 0; ///< where the pointer was
    qint32 pointerY = 0;
    qint32 parts = 0;
};

/// What the screens show in more pixels than their plane has there.
struct PictureFilePart {
    qint32 x = 0; ///< on the plane
    qint32 y = 0;
    qint32 width = 0;
    qint32 height = 0;
    qint32 pixelWidth = 0;
    qint32 pixelHeight = 0;
};

/// A rectangle of a picture.
struct PictureCut {
    PixelsToRead picture;
    QRect area;
    double fineness = 1; ///< its pixels for one of the plane's
};

/// Such a file, which stays mapped as long as this lives.
class PictureFile {
public:
    static constexpr int mostParts = 64;
    static constexpr int longestSide = 32767; // an X server's limit

    /// Null when it is no such file, is of another plane or is cut short.
    [[nodiscard]] static std::unique_ptr<PictureFile> open(const std::string &path, QSize plane);
    ~PictureFile();
    PictureFile(const PictureFile &) = delete;
    PictureFile &operator=(const PictureFile &) = delete;

    [[nodiscard]] PixelsToRead plane() const { return m_plane; }
    [[nodiscard]] QPoint pointer() const { return m_pointer; }
    /// False where a rectangle of the plane over several parts is no rectangle of pixels.
    [[nodiscard]] bool isOnePlane() const { return m_parts.size() <= 1; }
    /// The pixels that an area of the plane stands for: those of the part that it begins on, else the plane's own.
    [[nodiscard]] PictureCut cut(const QRect &area) const;

private:
    struct Part {
        QRect area;
        PixelsToRead pixels;
    };

    PictureFile(void *bytes, size_t length) : m_bytes(bytes), m_length(length) {}
    [[nodiscard]] bool parse(QSize plane);

    void *m_bytes;
    size_t m_length;
    PixelsToRead m_plane;
    QPoint m_pointer;
    std::vector<Part> m_parts;
};

} // namespace tavrine

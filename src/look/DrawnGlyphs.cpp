#include "look/DrawnGlyphs.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace tavrine::look {
namespace {

constexpr quint32 magic = 0x474C5931; // another form has another number
constexpr qint64 tableLimit = 16LL * 1024 * 1024;
constexpr quint32 pictureLimit = 8 * 1024 * 1024; // packed
constexpr int largestSide = 1024;
constexpr int bytesPerPixel = 4;
constexpr int quickest = 1; // of the packer's levels: a picture is packed once, and half of it is empty

/// Behind it stand the entries, the stamp, the texts and the pictures.
struct Header {
    quint32 magic;
    quint32 side;
    quint32 count;
    quint32 stampBytes; ///< what the pictures were made of
    quint32 textUnits;  ///< of UTF-16, of all emojis
};

/// One emoji. Entries are in the order of their texts, and the texts too.
struct Entry {
    quint32 text; ///< the first unit, among the texts
    quint32 units;
    quint64 picture; ///< its first byte in the file
    quint32 bytes;   ///< of the packed picture
    quint32 isSign;  ///< 1 or 0
};

/// Changes with the file, as far as its name, size and time tell.
QByteArray stampOf(const QString &path) {
    const QFileInfo info(path);
    return path.toUtf8() + '\0' + QByteArray::number(info.exists() ? info.size() : -1) + '\0' +
           QByteArray::number(info.lastModified().toMSecsSinceEpoch());
}

/// The font's file stands in front: the stamp tells it, since finding it anew costs more than all else here.
QByteArray stampOf(const GlyphSources &sources, const QString &fontFile) {
    return stampOf(fontFile) + '\0' + stampOf(sources.table) + '\0' + sources.family.toUtf8() + '\0' +
           sources.textFont.toUtf8();
}

bool isOfToday(const QByteArray &stamp, const GlyphSources &sources) {
    return stamp == stampOf(sources, QString::fromUtf8(stamp.left(stamp.indexOf('\0'))));
}

template <class Value>
Value valueAt(const QByteArray &bytes, size_t place) {
    Value value;
    std::memcpy(&value, bytes.constData() + place, sizeof(value));
    return value;
}

qint64 tableSize(const Header &header) {
    return qint64{sizeof(Header)} + qint64{header.count} * qint64{sizeof(Entry)} + qint64{header.stampBytes} +
           qint64{header.textUnits} * qint64{sizeof(QChar)};
}

Entry entryAt(const QByteArray &table, qsizetype index) {
    return valueAt<Entry>(table, sizeof(Header) + size_t(index) * sizeof(Entry));
}

QByteArray stampIn(const QByteArray &table, const Header &header) {
    constexpr qsizetype headBytes = sizeof(Header);
    constexpr qsizetype entryBytes = sizeof(Entry);
    return table.mid(headBytes + header.count * entryBytes, qsizetype{header.stampBytes});
}

QString textOf(const QByteArray &table, const Entry &entry) {
    const auto header = valueAt<Header>(table, 0);
    const size_t texts = sizeof(Header) + header.count * sizeof(Entry) + header.stampBytes;
    QString text(qsizetype(entry.units), Qt::Uninitialized);
    std::memcpy(text.data(), table.constData() + texts + entry.text * sizeof(QChar), entry.units * sizeof(QChar));
    return text;
}

/// The file's beginning up to its pictures; empty when it cannot be believed.
QByteArray readTable(QFile &file, int side) {
    QByteArray table = file.read(qint64{sizeof(Header)});
    if (table.size() != qsizetype{sizeof(Header)})
        return {};
    const auto header = valueAt<Header>(table, 0);
    if (header.magic != magic || header.side != quint32(side) || tableSize(header) > tableLimit)
        return {};
    table += file.read(tableSize(header) - table.size());
    if (table.size() != tableSize(header))
        return {};
    for (qsizetype i = 0; i < qsizetype(header.count); ++i) {
        const Entry entry = entryAt(table, i);
        if (entry.text > header.textUnits || entry.units > header.textUnits - entry.text || entry.bytes > pictureLimit)
            return {};
    }
    return table;
}

QByteArray packed(const QImage &picture) {
    QByteArray pixels;
    for (int y = 0; y < picture.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(picture.constScanLine(y)),
                      qsizetype{picture.width()} * bytesPerPixel);
    return qCompress(pixels, quickest);
}

/// The packer writes the length in front, most significant byte first; one that lies would have it ask for gigabytes.
bool tellsLength(const QByteArray &packed, qsizetype length) {
    return packed.size() > 4 && qFromBigEndian<quint32>(packed.constData()) == quint32(length);
}

} // namespace

QByteArray drawnGlyphsData(const GlyphSources &sources, const QString &fontFile, std::vector<DrawnGlyph> glyphs) {
    std::erase_if(glyphs, [&](const DrawnGlyph &glyph) {
        return glyph.picture.size() != QSize(sources.side, sources.side) ||
               glyph.picture.format() != QImage::Format_ARGB32_Premultiplied;
    });
    std::ranges::sort(glyphs, {}, &DrawnGlyph::emoji);
    const QByteArray stamp = stampOf(sources, fontFile);
    Header header{magic, quint32(sources.side), quint32(glyphs.size()), quint32(stamp.size()), 0};
    for (const DrawnGlyph &glyph : glyphs)
        header.textUnits += quint32(glyph.emoji.size());
    QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof(header));
    QString texts;
    QByteArray pictures;
    for (const DrawnGlyph &glyph : glyphs) {
        const QByteArray picture = packed(glyph.picture);
        const Entry entry{quint32(texts.size()), quint32(glyph.emoji.size()),
                          quint64(tableSize(header) + pictures.size()), quint32(picture.size()),
                          glyph.isSign ? 1U : 0U};
        bytes.append(reinterpret_cast<const char *>(&entry), sizeof(entry));
        texts += glyph.emoji;
        pictures += picture;
    }
    bytes += stamp;
    bytes.append(reinterpret_cast<const char *>(texts.constData()), texts.size() * qsizetype{sizeof(QChar)});
    return bytes + pictures;
}

DrawnGlyphs::DrawnGlyphs() = default;
DrawnGlyphs::~DrawnGlyphs() = default;

std::unique_ptr<DrawnGlyphs> DrawnGlyphs::open(const QString &path, const GlyphSources &sources) {
    const int side = sources.side;
    auto file = std::make_unique<QFile>(path);
    if (side <= 0 || side > largestSide || !QFileInfo(path).isFile() ||
        !file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return nullptr;
    const QByteArray own = readTable(*file, side);
    if (own.isEmpty())
        return nullptr;
    const auto header = valueAt<Header>(own, 0);
    if (!isOfToday(stampIn(own, header), sources))
        return nullptr;
    std::unique_ptr<DrawnGlyphs> glyphs(new DrawnGlyphs);
    glyphs->m_file = std::move(file);
    glyphs->m_table = own;
    glyphs->m_count = qsizetype(header.count);
    glyphs->m_side = side;
    return glyphs;
}

std::optional<DrawnGlyph> DrawnGlyphs::glyph(const QString &emoji) const {
    qsizetype begin = 0;
    for (qsizetype end = m_count; begin < end;) {
        const qsizetype middle = begin + (end - begin) / 2;
        if (textOf(m_table, entryAt(m_table, middle)) < emoji)
            begin = middle + 1;
        else
            end = middle;
    }
    if (begin == m_count)
        return std::nullopt;
    const Entry entry = entryAt(m_table, begin);
    const qsizetype expected = qsizetype{m_side} * m_side * bytesPerPixel;
    if (textOf(m_table, entry) != emoji || !m_file->seek(qint64(entry.picture)))
        return std::nullopt;
    const QByteArray stored = m_file->read(qint64{entry.bytes});
    const QByteArray pixels = tellsLength(stored, expected) ? qUncompress(stored) : QByteArray();
    if (pixels.size() != expected)
        return std::nullopt;
    const QImage picture(reinterpret_cast<const uchar *>(pixels.constData()), m_side, m_side,
                         qsizetype{m_side} * bytesPerPixel, QImage::Format_ARGB32_Premultiplied);
    return DrawnGlyph{emoji, picture.copy(), entry.isSign == 1};
}

} // namespace tavrine::look

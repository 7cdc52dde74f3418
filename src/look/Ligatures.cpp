#include "look/Ligatures.h"

#include <algorithm>

namespace tavrine::look {
namespace {

// Kinds of lookups in the OpenType specification's chapter on GSUB.
constexpr quint32 ligatureKind = 4;
constexpr quint32 extensionKind = 7;
constexpr quint32 mostParts = 32; // the longest sequence that Unicode recommends has ten code points

} // namespace

quint32 Ligatures::at(quint64 place) const {
    if (place + 2 > quint64(m_table.size()))
        return 0;
    const auto *bytes = reinterpret_cast<const uchar *>(m_table.constData()) + place;
    return quint32(bytes[0]) << 8 | bytes[1];
}

std::optional<quint32> Ligatures::of(const QList<quint32> &glyphs) const {
    if (glyphs.size() < 2 || glyphs.size() > qsizetype(mostParts))
        return std::nullopt;
    const quint64 lookups = at(8);
    for (quint64 i = 0; i < at(lookups); ++i) {
        const quint64 lookup = lookups + at(lookups + 2 + 2 * i);
        for (quint64 j = 0; j < at(lookup + 4); ++j) {
            quint64 subtable = lookup + at(lookup + 6 + 2 * j);
            quint32 kind = at(lookup);
            if (kind == extensionKind) {
                kind = at(subtable + 2);
                subtable += quint64(at(subtable + 4)) << 16 | at(subtable + 6);
            }
            if (kind != ligatureKind)
                continue;
            if (const auto found = inSubtable(subtable, glyphs))
                return found;
        }
    }
    return std::nullopt;
}

std::optional<quint32> Ligatures::inSubtable(quint64 subtable, const QList<quint32> &glyphs) const {
    const auto index = covered(subtable + at(subtable + 2), glyphs.front());
    if (at(subtable) != 1 || !index || *index >= at(subtable + 4))
        return std::nullopt;
    const quint64 set = subtable + at(subtable + 6 + 2 * quint64{*index});
    for (quint64 i = 0; i < at(set); ++i) {
        const quint64 ligature = set + at(set + 2 + 2 * i);
        if (at(ligature + 2) != quint32(glyphs.size()))
            continue;
        bool isSame = true;
        for (qsizetype part = 1; part < glyphs.size() && isSame; ++part)
            isSame = at(ligature + 2 + 2 * quint64(part)) == glyphs.at(part);
        if (isSame && at(ligature) != 0)
            return at(ligature);
    }
    return std::nullopt;
}

std::optional<quint32> Ligatures::covered(quint64 coverage, quint32 glyph) const {
    const quint32 format = at(coverage);
    const quint64 count = at(coverage + 2);
    for (quint64 i = 0; i < count; ++i) {
        if (format == 1 && at(coverage + 4 + 2 * i) == glyph)
            return quint32(i);
        const quint64 range = coverage + 4 + 6 * i;
        if (format == 2 && glyph >= at(range) && glyph <= at(range + 2))
            return at(range + 4) + glyph - at(range);
    }
    return std::nullopt;
}

} // namespace tavrine::look

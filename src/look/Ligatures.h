#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace tavrine::look {

/// The ligatures of a font, read out of its table of substitutions ("GSUB"): which one glyph a whole run of glyphs
/// becomes. To lay a sequence of emoji out as text takes three times as long as to draw it, since the toolkit unpacks
/// the picture of each part of it to measure that.
///
/// A value; any thread. The table is what a font file holds: whatever stands in it, nothing outside it is read.
class Ligatures {
public:
    explicit Ligatures(const QByteArray &table) : m_table(table) {}

    /// None where the table joins the glyphs by other means, or not at all.
    [[nodiscard]] std::optional<quint32> of(const QList<quint32> &glyphs) const;

private:
    [[nodiscard]] quint32 at(quint64 place) const; ///< 16 bits; 0 beyond the end
    [[nodiscard]] std::optional<quint32> inSubtable(quint64 subtable, const QList<quint32> &glyphs) const;
    [[nodiscard]] std::optional<quint32> covered(quint64 coverage, quint32 glyph) const;

    QByteArray m_table;
};

} // namespace tavrine::look

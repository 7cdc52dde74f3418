#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tavrine {

/// The texts of the program in a person's language, by the English ones that stand in the code and are shown where
/// there is none.
///
/// A file has a pair of lines for each text: the English one as it is shown on this desktop, and under it, behind "= ",
/// the other. "\n" is a line's end within a text; empty lines and those that begin with "#" are for its readers. `%1`
/// to
/// `%9` stand for what differs and come back as they are, in any order; `%N1` stands for a number alone, so that "Lost
/// items" is no count of items, and `%L1` for a text that is looked up in its turn. Whole texts are known, not words,
/// so that nothing that a person wrote is rewritten.
class Catalogue {
public:
    /// What is wrong with the file goes to `faults`, a line for each, and is left out.
    [[nodiscard]] static Catalogue parse(const QByteArray &file, QStringList *faults = nullptr);
    /// That of the first of the person's languages of which there is a file "de.txt" in `folder`, or which is English.
    [[nodiscard]] static std::optional<Catalogue> find(const QString &folder, const QStringList &languages);

    /// Itself where the catalogue has none.
    [[nodiscard]] QString shown(const QString &text) const;
    [[nodiscard]] bool has(const QString &text) const;
    /// "de"; of one that was found.
    [[nodiscard]] const QString &language() const { return m_language; }

private:
    enum class Kind { any, number, text };
    struct Place {
        qsizetype start = 0;
        qsizetype length = 0;
        int number = 0;
        Kind kind = Kind::any;
    };
    struct Pattern {
        QStringList parts;         ///< what stands round the places, one more than those
        std::vector<Place> places; ///< in their order in the text
        QString shown;
    };
    [[nodiscard]] static std::optional<Place> placeIn(const QString &text, qsizetype from);
    [[nodiscard]] static QStringList placesOf(const QString &text);
    [[nodiscard]] static std::optional<Pattern> patternOf(const QString &text, const QString &shown);
    [[nodiscard]] static std::optional<QStringList> innersOf(const QString &text, const Pattern &pattern);
    [[nodiscard]] std::optional<QString> find(const QString &text) const;

    QString m_language;
    QHash<QString, QString> m_whole;
    std::vector<Pattern> m_patterns;
    qsizetype m_longest = 0; ///< a text of twice that length is not ours
};

} // namespace tavrine

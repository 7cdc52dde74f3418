#pragma once

#include <QString>
#include <QStringList>

#include <compare>
#include <optional>

namespace tavrine {

/// How versions follow each other. Numbers in them have no largest value: they are compared as texts of digits.

/// No version that anybody gave to a program is longer; what is, is refused before it is compared.
inline constexpr qsizetype longestVersion = 64;

/// The order of Debian's packages: an epoch before ":", the version, a revision after the last "-". "~" comes before
/// the end, letters before other signs. An absent epoch or revision is 0.
[[nodiscard]] std::strong_ordering compareDebianVersions(QStringView a, QStringView b);

/// What a person calls that version: without its epoch and its revision.
[[nodiscard]] QString upstreamVersion(const QString &debianVersion);

/// Numbers between dots, then, behind "-", what makes it one before the release: "2.4.0", "2.4", "2.4.0-rc.1". What
/// stands behind "+" does not count. Missing numbers are zeros.
class SemanticVersion {
public:
    /// None for what is no such version, or is longer than any.
    [[nodiscard]] static std::optional<SemanticVersion> parse(const QString &text);

    std::strong_ordering operator<=>(const SemanticVersion &other) const;
    bool operator==(const SemanticVersion &other) const { return (*this <=> other) == 0; }

private:
    QStringList m_numbers;    ///< digits alone
    QStringList m_preRelease; ///< digits, or letters, digits and "-"; empty for a release
};

} // namespace tavrine

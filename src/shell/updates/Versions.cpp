#include "shell/updates/Versions.h"

#include <algorithm>

namespace tavrine {
namespace {

bool isDigit(QChar sign) {
    return sign >= u'0' && sign <= u'9';
}
bool isLetter(QChar sign) {
    return (sign >= u'a' && sign <= u'z') || (sign >= u'A' && sign <= u'Z');
}
bool isNumber(QStringView text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::strong_ordering compareTexts(QStringView a, QStringView b) {
    return a.compare(b) <=> 0;
}

/// Texts of digits, by the numbers that they are.
std::strong_ordering compareNumbers(QStringView a, QStringView b) {
    while (a.startsWith(u'0'))
        a = a.sliced(1);
    while (b.startsWith(u'0'))
        b = b.sliced(1);
    return a.size() != b.size() ? a.size() <=> b.size() : compareTexts(a, b);
}

/// What stands where a version is read beyond its end, or at a digit, is 0.
int weight(QStringView text, qsizetype place) {
    constexpr int beyondLetters = 0x10000;
    if (place >= text.size() || isDigit(text[place]))
        return 0;
    const QChar sign = text[place];
    return sign == u'~' ? -1 : isLetter(sign) ? sign.unicode() : sign.unicode() + beyondLetters;
}

QStringView takeDigits(QStringView &text) {
    qsizetype count = 0;
    while (count < text.size() && isDigit(text[count]))
        ++count;
    const QStringView digits = text.first(count);
    text = text.sliced(count);
    return digits;
}

/// By turns: what is no number, sign by sign, and numbers.
std::strong_ordering compareParts(QStringView a, QStringView b) {
    while (!a.empty() || !b.empty()) {
        qsizetype place = 0;
        for (;; ++place) {
            const int left = weight(a, place);
            const int right = weight(b, place);
            if (left != right)
                return left <=> right;
            if (left == 0)
                break;
        }
        a = a.sliced(place);
        b = b.sliced(place);
        const QStringView left = takeDigits(a);
        const QStringView right = takeDigits(b);
        if (const auto order = compareNumbers(left, right); order != 0)
            return order;
    }
    return std::strong_ordering::equal;
}

struct DebianVersion {
    QStringView epoch;
    QStringView upstream;
    QStringView revision;

    explicit DebianVersion(QStringView text) {
        if (const qsizetype colon = text.indexOf(u':'); colon >= 0) {
            epoch = text.first(colon);
            text = text.sliced(colon + 1);
        }
        const qsizetype dash = text.lastIndexOf(u'-');
        upstream = dash < 0 ? text : text.first(dash);
        revision = dash < 0 ? QStringView() : text.sliced(dash + 1);
    }
};

std::strong_ordering compareIdentifiers(QStringView a, QStringView b) {
    const bool isNumberA = isNumber(a);
    const bool isNumberB = isNumber(b);
    if (isNumberA && isNumberB)
        return compareNumbers(a, b);
    if (isNumberA != isNumberB)
        return isNumberA ? std::strong_ordering::less : std::strong_ordering::greater;
    return compareTexts(a, b);
}

bool isIdentifier(const QString &text) {
    return !text.isEmpty() && std::all_of(text.begin(), text.end(),
                                          [](QChar sign) { return isDigit(sign) || isLetter(sign) || sign == u'-'; });
}

} // namespace

std::strong_ordering compareDebianVersions(QStringView a, QStringView b) {
    const DebianVersion left(a);
    const DebianVersion right(b);
    if (const auto order = compareParts(left.epoch, right.epoch); order != 0)
        return order;
    if (const auto order = compareParts(left.upstream, right.upstream); order != 0)
        return order;
    return compareParts(left.revision, right.revision);
}

QString upstreamVersion(const QString &debianVersion) {
    return DebianVersion(debianVersion).upstream.toString();
}

std::optional<SemanticVersion> SemanticVersion::parse(const QString &text) {
    if (text.size() > longestVersion)
        return std::nullopt;
    const qsizetype plus = text.indexOf(u'+');
    const QString counted = plus < 0 ? text : text.first(plus);
    const qsizetype dash = counted.indexOf(u'-');
    SemanticVersion version;
    version.m_numbers = (dash < 0 ? counted : counted.first(dash)).split(u'.');
    if (dash >= 0)
        version.m_preRelease = counted.sliced(dash + 1).split(u'.');
    const bool isOne = std::all_of(version.m_numbers.begin(), version.m_numbers.end(),
                                   [](const QString &number) { return isNumber(number); }) &&
                       std::all_of(version.m_preRelease.begin(), version.m_preRelease.end(), isIdentifier);
    return isOne ? std::optional(version) : std::nullopt;
}

std::strong_ordering SemanticVersion::operator<=>(const SemanticVersion &other) const {
    for (qsizetype i = 0; i < std::max(m_numbers.size(), other.m_numbers.size()); ++i) {
        if (const auto order = compareNumbers(m_numbers.value(i), other.m_numbers.value(i)); order != 0)
            return order;
    }
    if (m_preRelease.isEmpty() != other.m_preRelease.isEmpty())
        return m_preRelease.isEmpty() ? std::strong_ordering::greater : std::strong_ordering::less;
    for (qsizetype i = 0; i < std::min(m_preRelease.size(), other.m_preRelease.size()); ++i) {
        if (const auto order = compareIdentifiers(m_preRelease.at(i), other.m_preRelease.at(i)); order != 0)
            return order;
    }
    return m_preRelease.size() <=> other.m_preRelease.size();
}

} // namespace tavrine

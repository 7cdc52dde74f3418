#include "clipboard/LiteralSearch.h"

#include <algorithm>
#include <array>

#ifdef __SSE2__
#include <bit>

#include <emmintrin.h>
#endif

namespace tavrine {
namespace {

using Byte = unsigned char;

constexpr bool isLowerLetter(Byte byte) {
    return byte >= 'a' && byte <= 'z';
}
constexpr Byte lowered(Byte byte) {
    return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte;
}

/// How often each byte is met in what people copy: prose, code, paths and addresses. Only the order counts.
constexpr std::array<Byte, 256> makeCommonness() {
    std::array<Byte, 256> commonness{};
    for (std::size_t byte = 0; byte < commonness.size(); ++byte)
        commonness[byte] = byte < 0x80 ? 10 : byte < 0xC0 ? 30 : 20;
    constexpr std::string_view fromRareToCommon =
        "~`^@$|!?&%+#;<>[]{}*\\'\"=qjzx9876543kvw()021ybp_:/,-.gfmudhclsnriaot\ne ";
    for (std::size_t i = 0; i < fromRareToCommon.size(); ++i)
        commonness[static_cast<Byte>(fromRareToCommon[i])] = static_cast<Byte>(40 + i);
    return commonness;
}
constexpr auto commonness = makeCommonness();

bool standsAt(const char *text, std::string_view literal) {
    for (std::size_t i = 0; i < literal.size(); ++i) {
        if (lowered(static_cast<Byte>(text[i])) != static_cast<Byte>(literal[i]))
            return false;
    }
    return true;
}

/// Searches the places from `first` up to and including `last`.
std::size_t findOneByOne(const char *text, std::size_t first, std::size_t last, std::string_view literal,
                         std::size_t rarest) {
    const auto wanted = static_cast<Byte>(literal[rarest]);
    for (std::size_t place = first; place <= last; ++place) {
        if (lowered(static_cast<Byte>(text[place + rarest])) == wanted && standsAt(text + place, literal))
            return place;
    }
    return std::string_view::npos;
}

#ifdef __SSE2__
constexpr std::size_t lanes = sizeof(__m128i);

/// One byte of the literal in all lanes. A letter is compared after the case bit is set; what else that makes equal
/// ("[" and "{") is sorted out where the whole literal is compared.
struct WantedByte {
    explicit WantedByte(char byte)
        : value(_mm_set1_epi8(byte)), caseBit(_mm_set1_epi8(isLowerLetter(static_cast<Byte>(byte)) ? 0x20 : 0)) {}

    [[nodiscard]] __m128i equalIn(const char *bytes) const {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
        return _mm_cmpeq_epi8(_mm_or_si128(block, caseBit), value);
    }

    __m128i value;
    __m128i caseBit;
};
#endif

/// The length of the proper UTF-8 character at the start of `text`, which is not empty; 0 when there is none.
std::size_t properCharacterLength(std::string_view text) {
    const auto at = [&](std::size_t i) { return i < text.size() ? static_cast<Byte>(text[i]) : Byte{0}; };
    const auto isBetween = [&](std::size_t i, Byte low, Byte high) { return at(i) >= low && at(i) <= high; };
    const auto isTail = [&](std::size_t i) { return isBetween(i, 0x80, 0xBF); };
    const Byte lead = at(0);
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return isTail(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const Byte low = lead == 0xE0 ? 0xA0 : 0x80;  // below: over-long
        const Byte high = lead == 0xED ? 0x9F : 0xBF; // above: surrogates
        return isBetween(1, low, high) && isTail(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const Byte low = lead == 0xF0 ? 0x90 : 0x80;
        const Byte high = lead == 0xF4 ? 0x8F : 0xBF; // above: beyond Unicode
        return isBetween(1, low, high) && isTail(2) && isTail(3) ? 4 : 0;
    }
    return 0;
}

} // namespace

std::pair<std::size_t, std::size_t> rarestBytes(std::string_view literal) {
    const auto commonnessAt = [&](std::size_t i) { return commonness[static_cast<Byte>(literal[i])]; };
    std::size_t rarest = 0;
    for (std::size_t i = 1; i < literal.size(); ++i) {
        if (commonnessAt(i) < commonnessAt(rarest))
            rarest = i;
    }
    std::size_t second = rarest == 0 && literal.size() > 1 ? 1 : 0;
    for (std::size_t i = second + 1; i < literal.size(); ++i) {
        if (i != rarest && commonnessAt(i) < commonnessAt(second))
            second = i;
    }
    return {rarest, second};
}

std::size_t findLiteral(std::string_view text, std::string_view literal, std::size_t rarest, std::size_t second) {
    if (literal.size() > text.size())
        return std::string_view::npos;
    const std::size_t last = text.size() - literal.size();
#ifdef __SSE2__
    // Sixteen places at a time: those where both chosen bytes fit are looked at more closely.
    if (last + 1 >= lanes) {
        const WantedByte wantedRarest(literal[rarest]);
        const WantedByte wantedSecond(literal[second]);
        for (std::size_t place = 0;;) {
            const char *start = text.data() + place;
            const __m128i both =
                _mm_and_si128(wantedRarest.equalIn(start + rarest), wantedSecond.equalIn(start + second));
            for (auto fits = static_cast<unsigned>(_mm_movemask_epi8(both)); fits != 0; fits &= fits - 1) {
                const std::size_t candidate = place + static_cast<std::size_t>(std::countr_zero(fits));
                if (standsAt(text.data() + candidate, literal))
                    return candidate;
            }
            if (place + lanes > last)
                return std::string_view::npos;
            // The last step overlaps the one before it rather than read past the text.
            place = std::min(place + lanes, last + 1 - lanes);
        }
    }
#endif
    return findOneByOne(text.data(), 0, last, literal, rarest);
}

bool isWellFormedUtf8(std::string_view text) {
    while (!text.empty()) {
#ifdef __SSE2__
        if (text.size() >= lanes &&
            _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(text.data()))) == 0) {
            text.remove_prefix(lanes);
            continue;
        }
#endif
        const std::size_t length = properCharacterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace tavrine

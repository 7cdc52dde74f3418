#include "adapters/x11/frozen/MonitorScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tavrine {
namespace {

constexpr double plainDotsPerInch = 96;
constexpr double smallestScale = 1;
constexpr double largestScale = 4;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// A number above 0 and nothing else.
std::optional<double> number(std::string_view text) {
    text = trimmed(text);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value) || value <= 0)
        return std::nullopt;
    return value;
}

/// Cuts `text` up to `separator` off its front.
std::string_view takePart(std::string_view &text, char separator) {
    const auto end = text.find(separator);
    const auto part = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    return part;
}

std::optional<double> factorFor(std::string_view factors, std::string_view name, int index) {
    for (int place = 0; !factors.empty(); ++place) {
        const auto part = takePart(factors, ';');
        const auto equals = part.find('=');
        if (equals == std::string_view::npos ? place == index : trimmed(part.substr(0, equals)) == name)
            return number(equals == std::string_view::npos ? part : part.substr(equals + 1));
    }
    return std::nullopt;
}

} // namespace

std::optional<double> dotsPerInchOf(std::string_view resources) {
    constexpr std::string_view key = "Xft.dpi:";
    while (!resources.empty()) {
        const auto line = trimmed(takePart(resources, '\n'));
        if (line.starts_with(key))
            return number(line.substr(key.size()));
    }
    return std::nullopt;
}

double monitorScale(const ScaleWishes &wishes, std::string_view monitorName, int monitorIndex) {
    const double own = factorFor(wishes.screenScaleFactors, monitorName, monitorIndex)
                           .value_or(wishes.dotsPerInch.value_or(plainDotsPerInch) / plainDotsPerInch);
    return std::clamp(own * number(wishes.scaleFactor).value_or(1), smallestScale, largestScale);
}

} // namespace tavrine

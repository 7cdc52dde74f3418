#include "adapters/wayland/text/TextScale.h"

#include "adapters/wayland/text/DconfFile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tavrine {
namespace {

constexpr double usualDotsPerInch = 96;
constexpr double least = 0.5; // of GNOME's own range
constexpr double most = 3;
constexpr std::size_t longestFile = 4 * 1024 * 1024; // one of dconf's has a few kilobytes

std::string environment(const char *name) {
    const char *const value = std::getenv(name);
    return value ? value : "";
}

/// Above 0, and nothing beside it.
std::optional<double> number(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value) || value <= 0)
        return std::nullopt;
    return value;
}

std::optional<double> scaleOfDots(std::string_view text) {
    const auto dots = number(text);
    return dots ? sensibleTextScale(*dots / usualDotsPerInch) : std::nullopt;
}

std::filesystem::path settingsFolder() {
    const std::string told = environment("XDG_CONFIG_HOME");
    return told.starts_with('/') ? std::filesystem::path(told) : std::filesystem::path(environment("HOME")) / ".config";
}

/// Empty for what is no plain file: a pipe would be waited for.
std::string content(const std::filesystem::path &path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) || std::filesystem::file_size(path, error) > longestFile)
        return {};
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

bool isPlasma() {
    const std::string names = ":" + environment("XDG_CURRENT_DESKTOP") + ":";
    return names.find(":KDE:") != std::string::npos;
}

} // namespace

std::optional<double> sensibleTextScale(double factor) {
    return factor >= least && factor <= most ? std::optional(factor) : std::nullopt;
}

std::optional<double> textScaleOfEnvironment() {
    return scaleOfDots(environment("QT_WAYLAND_FORCE_DPI"));
}

std::optional<double> textScaleOfPlasma(std::string_view settings) {
    std::optional<double> found;
    for (bool isGroup = false; !settings.empty();) {
        const auto end = settings.find('\n');
        const std::string_view line = trimmed(settings.substr(0, end));
        settings = end == std::string_view::npos ? std::string_view() : settings.substr(end + 1);
        const auto equals = line.find('=');
        if (line.starts_with('['))
            isGroup = line == "[General]";
        else if (isGroup && equals != std::string_view::npos &&
                 trimmed(line.substr(0, equals)) == "forceFontDPIWayland")
            found = scaleOfDots(trimmed(line.substr(equals + 1)));
    }
    return found;
}

std::optional<double> textScaleOfPlasmaFile() {
    return isPlasma() ? textScaleOfPlasma(content(settingsFolder() / "kcmfonts")) : std::nullopt;
}

std::optional<double> textScaleOfFiles() {
    if (const auto said = textScaleOfPlasmaFile())
        return said;
    const auto told =
        numberInDconf(content(settingsFolder() / "dconf" / "user"), "/org/gnome/desktop/interface/text-scaling-factor");
    return told ? sensibleTextScale(*told) : std::nullopt;
}

double textScaleOfSession() {
    const bool isTold = !environment("QT_WAYLAND_FORCE_DPI").empty();
    return (isTold ? textScaleOfEnvironment() : textScaleOfFiles()).value_or(1) *
           number(environment("QT_SCALE_FACTOR")).value_or(1);
}

} // namespace tavrine

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrine {

// How much larger than usual the person wants text: 1 is as usual. What is no sensible number counts as unsaid. No
// toolkit: the capture tool asks as well.

/// Of a factor that somebody told: within what GNOME's settings take.
[[nodiscard]] std::optional<double> sensibleTextScale(double factor);

/// By what the session's starter has told the toolkit, as Plasma's does; it goes before all else, as the toolkit heeds
/// it by itself.
[[nodiscard]] std::optional<double> textScaleOfEnvironment();

/// By the dots an inch that a person forces on Plasma, in its settings file.
[[nodiscard]] std::optional<double> textScaleOfPlasma(std::string_view settings);

/// By its settings file, where this is Plasma.
[[nodiscard]] std::optional<double> textScaleOfPlasmaFile();

/// By the files of Plasma, where this is Plasma, and of GNOME's settings, which other desktops use too.
[[nodiscard]] std::optional<double> textScaleOfFiles();

/// By all of them, with the factor that a person has set for the toolkit on top.
[[nodiscard]] double textScaleOfSession();

} // namespace tavrine

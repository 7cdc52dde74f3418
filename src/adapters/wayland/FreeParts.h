#pragma once

#include <QRect>
#include <QString>

#include <chrono>
#include <map>

namespace tavrine {

/// What panels of the desktop leave free of each output, by the output's name: in the compositor's points, from the
/// output's corner. An output of which that cannot be told in time is not in it. Any thread, with a connection of its
/// own: a compositor that does not bear the question ends that alone.
///
/// The layer shell tells a surface that asks for what is free how large that is, but not where. A pop-up knows: one
/// that wants to be far beyond a corner is moved onto the output, or to what is free of it, and is told where in its
/// surface it then is. The difference between that in such a surface and in one of the whole output is the place. None
/// of them gets a picture, so none is ever seen.
[[nodiscard]] std::map<QString, QRect> askForFreeParts(std::chrono::milliseconds patience);

} // namespace tavrine

#pragma once

#include "ports/MicrophoneSession.h"

#include <optional>

namespace tavrine {

/// The microphone of a recording: what the person hears the world with at present, else one that is built in, else the
/// first there is. None without any.
[[nodiscard]] std::optional<MicrophoneDevice> chosenMicrophone(const QList<MicrophoneDevice> &devices);

} // namespace tavrine

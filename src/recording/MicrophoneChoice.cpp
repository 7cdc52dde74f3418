#include "recording/MicrophoneChoice.h"

#include <algorithm>

namespace tavrine {

std::optional<MicrophoneDevice> chosenMicrophone(const QList<MicrophoneDevice> &devices) {
    for (const auto claim : {&MicrophoneDevice::isDefault, &MicrophoneDevice::isBuiltIn})
        if (const auto found = std::ranges::find(devices, true, claim); found != devices.end())
            return *found;
    return devices.isEmpty() ? std::nullopt : std::optional(devices.first());
}

} // namespace tavrine

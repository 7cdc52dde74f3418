#pragma once

#include <functional>

namespace tavrine {

/// The devices by which sound is heard. Lives on the main thread, as long as the process.
class AudioDevices {
public:
    virtual ~AudioDevices() = default;

    /// Calls `handler` on the main thread when sound begins to go elsewhere: another default device, another socket of
    /// the same device, or none, because it was unplugged or the sound server has ended. One listener; an empty one
    /// takes it away.
    ///
    /// The notices come while a player plays, and only then: nobody else asks for them, and it is the players that see
    /// the change. At rest nothing is watched.
    virtual void setDefaultOutputListener(std::function<void()> handler) = 0;
};

} // namespace tavrine

#pragma once

class QString;

namespace tavrine {

/// The short sounds of the desktop. Lives on the main thread, as long as the process.
class SystemSounds {
public:
    virtual ~SystemSounds() = default;

    /// Plays the sound of that name ("Pop") as the desktop's sound theme has it, and returns at once. Each call is
    /// heard; one that comes while another plays does not wait for it. Silent where the desktop has no sounds, where
    /// they are switched off or where nobody plays them.
    virtual void play(const QString &name) = 0;
};

} // namespace tavrine

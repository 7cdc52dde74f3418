#pragma once

#include "adapters/linux/RecorderProtocol.h"
#include "programs/recorder/DiskFile.h"
#include "programs/recorder/MovieFile.h"
#include "programs/recorder/PictureEncoder.h"
#include "programs/recorder/SharedPictures.h"
#include "programs/recorder/SoundEncoder.h"
#include "programs/recorder/SoundPlacement.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tavrine {

/// One movie from its first message to its last byte: what is told becomes pictures and packets, and these become
/// fragments. What makes no sense ends it with words; the movie goes as far as it came.
class Recording {
public:
    using Clock = std::chrono::steady_clock;
    /// In words; none for success.
    using Error = std::optional<std::string>;

    static constexpr std::chrono::milliseconds fragmentLength{500};
    /// How often the last picture's time is put right in the file while nothing changes.
    static constexpr std::chrono::milliseconds extendPeriod{1000};
    /// From one key picture to the next, at which players can begin.
    static constexpr std::chrono::seconds keyPeriod{3};

    /// `file` is open for writing and empty. `onProgress` is called on a thread of its own each time that something was
    /// written.
    Recording(int file, std::function<void()> onProgress) : m_disk(file, std::move(onProgress)) {}

    /// One message; `memory` is the descriptor that came with it, or -1. `pictureTaken` is called when a picture's
    /// memory is not needed any more.
    [[nodiscard]] Error take(std::string_view message, Descriptor memory, const std::function<void()> &pictureTaken);
    /// A `Finish` has come.
    [[nodiscard]] bool isFinished() const { return m_endTime.has_value(); }

    /// What is due by now is written. Says when it wants to be called again; none while nothing waits.
    [[nodiscard]] std::optional<Clock::time_point> writeWhatIsDue(Clock::time_point now);
    [[nodiscard]] bool hasDiskFailed() const { return m_disk.hasFailed(); }

    /// Ends the movie with all that came.
    [[nodiscard]] Error finish(Clock::time_point now);
    /// The error of that is one of a disk without room, or with none for this person.
    [[nodiscard]] bool isDiskFull() const { return m_isDiskFull; }

private:
    [[nodiscard]] Error start(const recorderProtocol::Start &start);
    [[nodiscard]] Error addPicture(const recorderProtocol::Picture &picture, Descriptor memory,
                                   const std::function<void()> &pictureTaken);
    [[nodiscard]] Error addSound(const recorderProtocol::Sound &sound);
    [[nodiscard]] std::uint64_t ticksOf(std::chrono::nanoseconds time) const;
    /// How long the last picture has been shown, as far as this machine's clock tells.
    [[nodiscard]] std::uint32_t shownUntil(Clock::time_point now) const;
    void writeFragment(std::uint32_t lastDuration);
    /// Whether the disk has no room, by an error of errno's; 0 is none.
    void noteRoom(int error);

    DiskFile m_disk;
    recorderProtocol::Start m_start;
    std::unique_ptr<PictureEncoder> m_pictures;
    std::unique_ptr<SoundEncoder> m_sound;
    std::optional<FilmPicture> m_film;
    std::optional<MovieFile> m_movie;
    SharedPictures m_memory;
    std::optional<std::chrono::nanoseconds> m_sessionTime;
    std::optional<SoundPlacement> m_placement;
    std::optional<std::int64_t> m_endTime;

    std::optional<std::uint64_t> m_lastNumber; ///< of the last picture
    std::uint64_t m_lastTicks = 0;
    std::optional<std::uint64_t> m_lastKeyTicks;
    Clock::time_point m_lastArrival;
    std::uint64_t m_fragmentTicks = 0; ///< of the first picture that waits
    std::optional<Clock::time_point> m_waitingSince;
    Clock::time_point m_extended;
    bool m_isDiskFull = false;
};

} // namespace tavrine

#pragma once

#include "ports/ScreenStream.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtPlugin>

#include <functional>
#include <memory>

namespace tavrine {

struct MicrophoneDevice {
    QString uniqueID;
    QString localizedName;
    bool isDefault = false; ///< what the person hears the world with at present
    bool isBuiltIn = false;
    bool operator==(const MicrophoneDevice &) const = default;
};

/// Sound as it comes: interleaved 32-bit floats in native order, in `microphoneChannels` at `microphoneSampleRate`.
struct AudioSample {
    MediaTime presentationTime{}; ///< of its first sample, by the clock of the pictures
    QByteArray data;
};

inline constexpr int microphoneSampleRate = 44'100;
inline constexpr int microphoneChannels = 2;

/// A microphone that is heard. Made by `MicrophoneSessions`; lives on the main thread. Dropping it stops it, and then
/// the handler is not called any more.
///
/// A device that is unplugged, suspended, muted or changed never ends it: what is missing is left out of the samples'
/// times, and the sound comes back with the device, or with the one that is the default then.
class MicrophoneSession {
public:
    virtual ~MicrophoneSession() = default;
    virtual void startRunning() = 0;
    virtual void stopRunning() = 0;
};

/// Knows the microphones. Main thread.
class MicrophoneSessions {
public:
    /// Called on a thread of the session's own, one call at a time. It must not block.
    using SampleHandler = std::function<void(const AudioSample &sample)>;
    using DevicesAnswer = std::function<void(const QList<MicrophoneDevice> &devices)>;

    virtual ~MicrophoneSessions() = default;

    /// Every source of sound that is no echo of what this machine plays, or none where no sound server answers.
    /// `answer` comes once, later, within a second.
    virtual void devices(DevicesAnswer answer) = 0;

    /// Hears `device`; null when the last answer of `devices` did not name it.
    [[nodiscard]] virtual std::unique_ptr<MicrophoneSession> makeSession(const MicrophoneDevice &device,
                                                                         SampleHandler handler) = 0;
};

} // namespace tavrine

#define TAVRINE_MICROPHONE_SESSIONS "tavrine.MicrophoneSessions" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::MicrophoneSessions, TAVRINE_MICROPHONE_SESSIONS)

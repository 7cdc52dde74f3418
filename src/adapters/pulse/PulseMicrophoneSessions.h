#pragma once

#include "ports/MicrophoneSession.h"

#include <QObject>

namespace tavrine {

/// The microphones of a PulseAudio server, or of one that speaks its language. Built as a plugin, so that the server's
/// library is loaded with the first question. Main thread; each question and each session has a thread of its own, for
/// which nobody waits.
class PulseMicrophoneSessions final : public QObject, public MicrophoneSessions {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_MICROPHONE_SESSIONS)
    Q_INTERFACES(tavrine::MicrophoneSessions)

public:
    void devices(DevicesAnswer answer) override;
    [[nodiscard]] std::unique_ptr<MicrophoneSession> makeSession(const MicrophoneDevice &device,
                                                                 SampleHandler handler) override;

private:
    QList<MicrophoneDevice> m_known; ///< by the last answer
};

} // namespace tavrine

#pragma once

#include "adapters/pulse/SoundContext.h"
#include "adapters/pulse/SoundPlacer.h"
#include "base/SampleGate.h"

namespace tavrine {

/// A microphone's work on its thread: it listens to one device of the sound server as long as that is there, else to
/// the default one. Whatever ends, the server included, is tried again.
class PulseMicrophone {
public:
    static constexpr std::chrono::milliseconds betweenTries{500};

    PulseMicrophone(std::string wanted, SampleGate<AudioSample> &gate);

    /// Until the gate is ended.
    void run();

private:
    void serve(SoundContext &context);
    void look();
    void lookForDefault();
    void listen(const SoundSource &source);
    void endListening();
    void read();
    void give(const float *samples, size_t bytes);

    static void sourceTold(pa_context *context, const pa_source_info *info, int end, void *self);
    static void serverTold(pa_context *context, const pa_server_info *info, void *self);
    static void noticed(pa_context *context, pa_subscription_event_type_t type, uint32_t index, void *self);
    static void streamChanged(pa_stream *stream, void *self);
    static void readable(pa_stream *stream, size_t bytes, void *self);

    const std::string m_wanted;
    SampleGate<AudioSample> &m_gate;
    SoundPlacer m_placer;
    SoundContext *m_context = nullptr; ///< while it serves
    pa_stream *m_stream = nullptr;
    std::string m_heard;      ///< the device that is listened to
    bool m_isLooking = false; ///< for a device
    bool m_isToLook = false;  ///< devices have changed
    bool m_isWanted = true;   ///< the question under way is for the wanted device
};

} // namespace tavrine

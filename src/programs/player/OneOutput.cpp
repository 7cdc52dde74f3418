// The one way from this process to a device, in the place of the sound library's own function of this name.
//
// A sound server moves a stream to the new default output when the old one goes or another one is chosen, and a player
// that has lost its stream opens another one. Either would carry the music from headphones to the speakers. So the
// stream is bound to the device on which it begins, and there is no second one.
#include <atomic>

#include <dlfcn.h>
#include <pulse/error.h>
#include <pulse/stream.h>

extern "C" [[gnu::visibility("default")]] int pa_stream_connect_playback(pa_stream *stream, const char *device,
                                                                         const pa_buffer_attr *attributes,
                                                                         pa_stream_flags_t flags,
                                                                         const pa_cvolume *volume, pa_stream *master) {
    static std::atomic<bool> isUsed = false;
    // The library is loaded with us, so this is found or we would not run.
    static const auto libraryFunction =
        reinterpret_cast<decltype(&pa_stream_connect_playback)>(dlsym(RTLD_NEXT, "pa_stream_connect_playback"));
    if (isUsed.exchange(true))
        return -PA_ERR_ACCESS;
    return libraryFunction(stream, device, attributes, static_cast<pa_stream_flags_t>(flags | PA_STREAM_DONT_MOVE),
                           volume, master);
}

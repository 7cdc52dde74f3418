#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include <pulse/pulseaudio.h>

namespace tavrine {

/// The way into the sound server beside the one that the music takes: tells when sound goes elsewhere. Speaks to
/// PulseAudio and to PipeWire alike. One thread, that of `loop`.
class SoundServer {
public:
    /// What becomes of a server that does not run.
    enum class Missing { started, left };

    /// `loop` outlives it.
    explicit SoundServer(pa_mainloop *loop);
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    /// Waits for the server and for its word on where sound goes. Why there is none, otherwise.
    [[nodiscard]] std::optional<std::string> connect(std::chrono::milliseconds longest,
                                                     Missing missing = Missing::started);

    /// Once connected: where the server is, for others who look for it.
    [[nodiscard]] std::string address() const;

    /// Called once, when the default output is another one (another device, or another socket of the same: headphones
    /// are often no more than that), or when the server has gone.
    void setOnOutputChanged(std::function<void()> handler) { m_onOutputChanged = std::move(handler); }

private:
    struct Output {
        std::string device;
        std::string port;
        bool operator==(const Output &) const = default;
    };

    static void noticed(pa_context *context, pa_subscription_event_type_t type, uint32_t index, void *self);
    static void serverTold(pa_context *context, const pa_server_info *info, void *self);
    static void deviceTold(pa_context *context, const pa_sink_info *info, int end, void *self);
    static void stateChanged(pa_context *context, void *self);

    void ask();
    void learn(const Output &output);
    void change();

    pa_mainloop *m_loop;
    pa_context *m_context;
    std::string m_asked; ///< the device whose port is asked for
    std::optional<Output> m_output;
    std::function<void()> m_onOutputChanged;
};

} // namespace tavrine

#include "adapters/pulse/PulseMicrophoneSessions.h"

#include "adapters/pulse/PulseMicrophone.h"
#include "base/OnMainThread.h"

#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <thread>

#include <sys/prctl.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestAnswer = 900ms;  // of the server
constexpr auto longestSilence = 950ms; // of the thread that asks it, whatever holds it up

/// What the server says of its sources; none when it says nothing in time.
QList<MicrophoneDevice> readDevices() {
    struct Answer {
        QList<MicrophoneDevice> devices;
        std::string usual;
        int parts = 0;
    } answer;
    const auto end = std::chrono::steady_clock::now() + longestAnswer;
    SoundContext context(PA_CONTEXT_NOFLAGS);
    bool hasAsked = false;
    while (answer.parts < 2) {
        if (context.isReady() && !std::exchange(hasAsked, true)) {
            begin(pa_context_get_server_info(
                context.get(),
                [](pa_context *, const pa_server_info *info, void *to) {
                    auto &told = *static_cast<Answer *>(to);
                    told.usual = info && info->default_source_name ? info->default_source_name : "";
                    ++told.parts;
                },
                &answer));
            begin(pa_context_get_source_info_list(
                context.get(),
                [](pa_context *, const pa_source_info *info, int, void *to) {
                    auto &told = *static_cast<Answer *>(to);
                    if (!info) {
                        ++told.parts;
                        return;
                    }
                    const SoundSource source = soundSource(*info);
                    if (!source.isMonitor)
                        told.devices.append({.uniqueID = QString::fromStdString(source.name),
                                             .localizedName = QString::fromStdString(source.description),
                                             .isDefault = source.name == told.usual,
                                             .isBuiltIn = source.isBuiltIn});
                },
                &answer));
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (!context.isGood() || left <= 0ms || !context.turn(left))
            return {};
    }
    return answer.devices;
}

class PulseSession final : public MicrophoneSession {
public:
    PulseSession(const QString &device, MicrophoneSessions::SampleHandler handler)
        : m_device(device.toStdString()), m_handler(std::move(handler)) {}
    ~PulseSession() override { stopRunning(); }

    void startRunning() override {
        if (m_gate)
            return;
        m_gate = std::make_shared<SampleGate<AudioSample>>(m_handler);
        std::thread([gate = m_gate, device = m_device] {
            ::prctl(PR_SET_NAME, "microphone");
            PulseMicrophone(device, *gate).run();
        }).detach();
    }
    void stopRunning() override {
        if (const auto gate = std::exchange(m_gate, nullptr)) {
            gate->end();
            gate->waitUntilSilent();
        }
    }

private:
    const std::string m_device;
    const MicrophoneSessions::SampleHandler m_handler;
    std::shared_ptr<SampleGate<AudioSample>> m_gate; ///< while it runs; shared with its thread
};

} // namespace

void PulseMicrophoneSessions::devices(DevicesAnswer answer) {
    const FirstAnswer<DevicesAnswer> tell(
        [self = QPointer(this), answer = std::move(answer)](const QList<MicrophoneDevice> &devices) {
            if (self)
                self->m_known = devices;
            answer(devices);
        });
    QTimer::singleShot(longestSilence, this, [tell] { tell(QList<MicrophoneDevice>()); });
    std::thread([tell] {
        const auto devices = readDevices();
        onMainThread([tell, devices] { tell(devices); });
    }).detach();
}

std::unique_ptr<MicrophoneSession> PulseMicrophoneSessions::makeSession(const MicrophoneDevice &device,
                                                                        SampleHandler handler) {
    const bool isKnown = std::any_of(m_known.begin(), m_known.end(),
                                     [&](const MicrophoneDevice &each) { return each.uniqueID == device.uniqueID; });
    return isKnown ? std::make_unique<PulseSession>(device.uniqueID, std::move(handler)) : nullptr;
}

} // namespace tavrine

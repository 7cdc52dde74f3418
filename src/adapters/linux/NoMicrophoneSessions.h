#pragma once

#include "ports/MicrophoneSession.h"

#include <QTimer>

namespace tavrine {

/// Stands where no microphone can be heard, as the plugin that could is missing: there are none.
class NoMicrophoneSessions final : public MicrophoneSessions {
public:
    void devices(DevicesAnswer answer) override {
        QTimer::singleShot(0, [answer = std::move(answer)] { answer({}); });
    }
    [[nodiscard]] std::unique_ptr<MicrophoneSession> makeSession(const MicrophoneDevice & /*device*/,
                                                                 SampleHandler /*handler*/) override {
        return nullptr;
    }
};

} // namespace tavrine

#pragma once

#include "ports/ScreenStream.h"

#include <QTimer>

namespace tavrine {

/// Stands where nothing can see the screen, or the plugin that could is missing: the content is not told, and a stream
/// does not start.
class NoScreenStreams final : public ScreenStreams {
public:
    void getShareableContent(ContentAnswer answer) override {
        QTimer::singleShot(0, [answer = std::move(answer)] { answer(reason()); });
    }
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter & /*filter*/,
                                                           const ScreenStreamConfiguration & /*configuration*/,
                                                           Handlers /*handlers*/) override {
        return std::make_unique<NoStream>();
    }

private:
    class NoStream final : public ScreenStream {
    public:
        void startCapture(Completion completion) override { refuse(std::move(completion)); }
        void stopCapture(Completion completion) override { refuse(std::move(completion)); }

    private:
        void refuse(Completion completion) {
            QTimer::singleShot(0, &m_context, [completion = std::move(completion)] { completion(reason()); });
        }
        QObject m_context;
    };

    static QString reason() { return QStringLiteral("This desktop does not show its screen."); }
};

} // namespace tavrine

#pragma once

#include "ports/ScreenStream.h"

#include <QObject>

namespace tavrine {

/// The screens that the ScreenCast portal shows, after the person has said so. No window can be kept out. Built as a
/// plugin, so that nothing of it is loaded before the first recording. Main thread.
class PortalScreenStreams final : public QObject, public ScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)
    Q_INTERFACES(tavrine::ScreenStreams)

public:
    [[nodiscard]] bool tellsWindows() const override { return false; }
    void getShareableContent(ContentAnswer answer) override;
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

} // namespace tavrine

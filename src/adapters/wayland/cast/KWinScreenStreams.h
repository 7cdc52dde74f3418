#pragma once

#include "ports/ScreenStream.h"

#include <QObject>

namespace tavrine {

/// The outputs of KWin, cast by it over PipeWire. Windows have no numbers there, so that none is named. Built as a
/// plugin, so that nothing of it is loaded before the first recording. Main thread.
class KWinScreenStreams final : public QObject, public ScreenStreams {
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

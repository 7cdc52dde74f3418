#pragma once

#include "ports/ScreenStream.h"

#include <QObject>

namespace tavrine {

/// The screens of an X server. Built as a plugin, so that what a recording takes of the server's libraries is loaded
/// with the first one. Main thread.
class X11ScreenStreams final : public QObject, public ScreenStreams {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCREEN_STREAMS)
    Q_INTERFACES(tavrine::ScreenStreams)

public:
    void getShareableContent(ContentAnswer answer) override;
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;
};

} // namespace tavrine

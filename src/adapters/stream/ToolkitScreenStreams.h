#pragma once

#include "ports/ScreenStream.h"

#include <QObject>

namespace tavrine {

/// Of a desktop that tells programs of no windows: none can be kept out of a picture, and the displays are those of the
/// toolkit. Each way to their pictures derives from it and is a plugin of its own, so that nothing of it is loaded
/// before the first recording. Main thread.
class ToolkitScreenStreams : public QObject, public ScreenStreams {
    Q_OBJECT
    Q_INTERFACES(tavrine::ScreenStreams)

public:
    [[nodiscard]] bool tellsWindows() const final { return false; }
    void getShareableContent(ContentAnswer answer) final;
};

} // namespace tavrine

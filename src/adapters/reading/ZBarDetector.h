#pragma once

#include "ports/CodeDetector.h"

#include <QObject>

namespace tavrine {

/// QR codes by ZBar, for what is found on the screen. The root object of its plugin.
class ZBarDetector final : public QObject, public CodeDetector {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_CODEDETECTOR)
    Q_INTERFACES(tavrine::CodeDetector)

public:
    void prepare() override;
    using CodeDetector::detect;
    [[nodiscard]] Result detect(const QImage &image, std::stop_token stop) override;
};

} // namespace tavrine

#pragma once

#include "ports/CodeDetector.h"

#include <QObject>

namespace tavrine {

/// QR codes by ZXing, for the editor, which shows where they are. The root object of its plugin.
class ZXingDetector final : public QObject, public CodeDetector {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_CODEDETECTOR)
    Q_INTERFACES(tavrine::CodeDetector)

public:
    using CodeDetector::detect;
    [[nodiscard]] Result detect(const QImage &image, std::stop_token stop) override;
};

} // namespace tavrine

#pragma once

#include "ports/Recognizer.h"

#include <QObject>

#include <memory>

namespace tavrine {

/// Text by Tesseract's neural engine, in the desktop's languages as far as they are installed, and in English. The root
/// object of its plugin.
///
/// OMP_THREAD_LIMIT must be 1 in the environment before the plugin is loaded: the library's threads, which read it as
/// they are loaded, make a page ten times slower on a machine that is busy.
class TesseractRecognizer final : public QObject, public Recognizer {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_RECOGNIZER)
    Q_INTERFACES(tavrine::Recognizer)

public:
    TesseractRecognizer();
    ~TesseractRecognizer() override;
    void prepare() override;
    [[nodiscard]] Result recognize(const QImage &image, std::stop_token stop) override;

private:
    class Engine;
    std::unique_ptr<Engine> m_engine;
};

} // namespace tavrine

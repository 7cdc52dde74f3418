#pragma once

#include "ports/Recognizer.h"

#include <QObject>

namespace tavrine::test {

/// A plugin that a picture has taken over: it tries what the reader's walls are against, and its lines tell what each
/// came to, "done" or the name of the error.
class TryingRecognizer final : public QObject, public Recognizer {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.veltrane.Tavrine.Recognizer")
    Q_INTERFACES(tavrine::Recognizer)

public:
    void prepare() override;
    [[nodiscard]] Result recognize(const QImage &image, std::stop_token stop) override;

private:
    QStringList m_before; ///< the same, before the walls
};

} // namespace tavrine::test

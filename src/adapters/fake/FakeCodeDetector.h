#pragma once

#include "ports/CodeDetector.h"

#include <atomic>

namespace tavrine {

/// Finds the codes that a test gives it, in pictures that are large enough to hold one.
class FakeCodeDetector final : public CodeDetector {
public:
    [[nodiscard]] Result detect(const QImage &image) override {
        m_images.append(image);
        if (m_isCancelled)
            return Failure{QStringLiteral("cancelled")};
        if (image.isNull())
            return Failure{QStringLiteral("no pixels")};
        if (m_failsNext.exchange(false))
            return Failure{QStringLiteral("no answer")};
        return image.width() >= 21 && image.height() >= 21 ? m_codes : QList<DetectedCode>();
    }

    void cancel() override { m_isCancelled = true; }

    void setCodes(const QList<DetectedCode> &codes) { m_codes = codes; }
    /// Where they stand is all the same.
    void setPayloads(const QStringList &payloads) {
        m_codes.clear();
        for (const QString &payload : payloads)
            m_codes.append({payload, QRectF(0.25, 0.25, 0.5, 0.5)});
    }
    void failNext() { m_failsNext = true; }
    [[nodiscard]] const QList<QImage> &images() const { return m_images; }

private:
    QList<DetectedCode> m_codes;
    std::atomic<bool> m_isCancelled = false;
    std::atomic<bool> m_failsNext = false;
    QList<QImage> m_images;
};

} // namespace tavrine

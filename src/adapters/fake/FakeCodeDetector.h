#pragma once

#include "adapters/fake/FakeHold.h"
#include "ports/CodeDetector.h"

#include <mutex>
#include <utility>

namespace tavrine {

/// Finds the codes that a test gives it, in pictures that are large enough to hold one.
class FakeCodeDetector final : public CodeDetector {
public:
    using CodeDetector::detect;
    [[nodiscard]] Result detect(const QImage &image, std::stop_token stop) override {
        {
            const std::lock_guard lock(m_mutex);
            m_images.append(image);
        }
        if (!m_hold.pass(std::move(stop)))
            return Failure{QStringLiteral("cancelled")};
        if (image.isNull())
            return Failure{QStringLiteral("no pixels")};
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_failsNext, false))
            return Failure{QStringLiteral("no answer")};
        return image.width() >= 21 && image.height() >= 21 ? m_codes : QList<DetectedCode>();
    }

    void cancel() override { m_hold.cancel(); }

    /// From now on a picture takes without end, until it is let go again.
    void hold(bool isHeld = true) { m_hold.hold(isHeld); }
    /// How many pictures take without end at present.
    [[nodiscard]] int waiting() const { return m_hold.waiting(); }
    void setCodes(const QList<DetectedCode> &codes) {
        const std::lock_guard lock(m_mutex);
        m_codes = codes;
    }
    /// Where they stand is all the same.
    void setPayloads(const QStringList &payloads) {
        QList<DetectedCode> codes;
        for (const QString &payload : payloads)
            codes.append({payload, QRectF(0.25, 0.25, 0.5, 0.5)});
        setCodes(codes);
    }
    void failNext() {
        const std::lock_guard lock(m_mutex);
        m_failsNext = true;
    }
    [[nodiscard]] QList<QImage> images() const {
        const std::lock_guard lock(m_mutex);
        return m_images;
    }

private:
    mutable std::mutex m_mutex; // the queue's threads call
    FakeHold m_hold;
    QList<DetectedCode> m_codes;
    bool m_failsNext = false;
    QList<QImage> m_images;
};

} // namespace tavrine

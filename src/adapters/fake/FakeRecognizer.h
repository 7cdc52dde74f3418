#pragma once

#include "adapters/fake/FakeHold.h"
#include "ports/Recognizer.h"

#include <QList>

#include <mutex>
#include <utility>

namespace tavrine {

/// Tells the lines that a test gives it, for pictures that are large enough to hold letters.
class FakeRecognizer final : public Recognizer {
public:
    using Recognizer::recognize;
    [[nodiscard]] Result recognize(const QImage &image, std::stop_token stop) override {
        {
            const std::lock_guard lock(m_mutex);
            m_images.append(image);
        }
        if (!m_hold.pass(std::move(stop)))
            return Failure{QStringLiteral("cancelled")};
        if (image.isNull())
            return Failure{QStringLiteral("no pixels")};
        const std::lock_guard lock(m_mutex);
        if (const auto failure = std::exchange(m_nextFailure, QString()); !failure.isEmpty())
            return Failure{failure};
        return image.width() > 4 && image.height() > 4 ? m_lines : QStringList();
    }

    void cancel() override { m_hold.cancel(); }

    /// From now on a picture takes without end, until it is let go again.
    void hold(bool isHeld = true) { m_hold.hold(isHeld); }
    /// The next picture alone.
    void holdNext() { m_hold.holdNext(); }
    /// How many pictures take without end at present.
    [[nodiscard]] int waiting() const { return m_hold.waiting(); }
    /// How many pictures it was given, while others are read.
    [[nodiscard]] qsizetype count() const {
        const std::lock_guard lock(m_mutex);
        return m_images.size();
    }
    void setLines(const QStringList &lines) {
        const std::lock_guard lock(m_mutex);
        m_lines = lines;
    }
    void failNextRecognition(const QString &why) {
        const std::lock_guard lock(m_mutex);
        m_nextFailure = why;
    }
    /// What was to be read, in order.
    [[nodiscard]] QList<QImage> images() const {
        const std::lock_guard lock(m_mutex);
        return m_images;
    }

private:
    mutable std::mutex m_mutex; // the queue's threads call
    FakeHold m_hold;
    QStringList m_lines;
    QString m_nextFailure;
    QList<QImage> m_images;
};

} // namespace tavrine

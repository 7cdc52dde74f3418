#pragma once

#include "ports/Recognizer.h"

#include <QList>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace tavrine {

/// Tells the lines that a test gives it, for pictures that are large enough to hold letters.
class FakeRecognizer final : public Recognizer {
public:
    using Recognizer::recognize;
    [[nodiscard]] Result recognize(const QImage &image, std::stop_token stop) override {
        std::unique_lock lock(m_mutex);
        m_images.append(image);
        m_changed.wait(lock, stop, [this] { return !m_isHeld || m_isCancelled; });
        if (m_isCancelled || stop.stop_requested())
            return Failure{QStringLiteral("cancelled")};
        if (image.isNull())
            return Failure{QStringLiteral("no pixels")};
        if (const auto failure = std::exchange(m_nextFailure, QString()); !failure.isEmpty())
            return Failure{failure};
        return image.width() > 4 && image.height() > 4 ? m_lines : QStringList();
    }

    void cancel() override {
        const std::lock_guard lock(m_mutex);
        m_isCancelled = true;
        m_changed.notify_all();
    }

    /// From now on a picture takes without end, until it is let go again.
    void hold(bool isHeld = true) {
        const std::lock_guard lock(m_mutex);
        m_isHeld = isHeld;
        m_changed.notify_all();
    }
    /// How many pictures it was given, while others are read.
    [[nodiscard]] qsizetype count() const {
        const std::lock_guard lock(m_mutex);
        return m_images.size();
    }
    void setLines(const QStringList &lines) { m_lines = lines; }
    void failNextRecognition(const QString &why) { m_nextFailure = why; }
    /// What was to be read, in order.
    [[nodiscard]] const QList<QImage> &images() const { return m_images; }

private:
    mutable std::mutex m_mutex; // the queue's thread calls
    std::condition_variable_any m_changed;
    bool m_isHeld = false;
    bool m_isCancelled = false;
    QStringList m_lines;
    QString m_nextFailure;
    QList<QImage> m_images;
};

} // namespace tavrine

#pragma once

#include "ports/Recognizer.h"

#include <QList>

#include <mutex>
#include <utility>

namespace tavrine {

/// Tells the lines that a test gives it, for pictures that are large enough to hold letters.
class FakeRecognizer final : public Recognizer {
public:
    [[nodiscard]] Result recognize(const QImage &image) override {
        const std::lock_guard lock(m_mutex);
        m_images.append(image);
        if (image.isNull())
            return Failure{QStringLiteral("no pixels")};
        if (const auto failure = std::exchange(m_nextFailure, QString()); !failure.isEmpty())
            return Failure{failure};
        return image.width() > 4 && image.height() > 4 ? m_lines : QStringList();
    }

    void setLines(const QStringList &lines) { m_lines = lines; }
    void failNextRecognition(const QString &why) { m_nextFailure = why; }
    /// What was to be read, in order.
    [[nodiscard]] const QList<QImage> &images() const { return m_images; }

private:
    std::mutex m_mutex; // the queue's thread calls
    QStringList m_lines;
    QString m_nextFailure;
    QList<QImage> m_images;
};

} // namespace tavrine

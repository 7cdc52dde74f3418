#pragma once

#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/ConcurrentQueue.h"
#include "capture/reading/OCRManager.h"

#include <QImage>
#include <QSemaphore>

#include <gtest/gtest.h>

namespace tavrine {

/// A desk for what reads pictures: a recogniser and a detector that a test fills, and the clock.
class ReadingTest : public testing::Test {
protected:
    /// Lets the queue come to its end.
    void drain() {
        QSemaphore done;
        queue.async([&done] { done.release(); });
        done.acquire();
    }
    /// And then the main queue, without moving the clock.
    void settle() {
        drain();
        time.runPending();
    }
    [[nodiscard]] static QImage picture(const QColor &colour = Qt::white) {
        QImage image(60, 40, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }
    [[nodiscard]] static QString text(const char *utf8) { return QString::fromUtf8(utf8); }

    VirtualTime time;
    FakePasteboard pasteboard;
    FakeUrlOpener urlOpener;
    FakeRecognizer recognizer;
    FakeCodeDetector detector;
    ConcurrentQueue queue{QStringLiteral("com.tavrine.recognition"), 1}; ///< one at a time, so that its end is known
    OCRManager manager{recognizer, queue, time};
};

} // namespace tavrine

#pragma once

#include "adapters/pasteboard/ShortLimits.h"
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/ReaderAtRest.h"
#include "adapters/x11/TestOwner.h"
#include "adapters/x11/TestRequestor.h"
#include "adapters/x11/X11Pasteboard.h"

#include <QTest>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine {

/// Lets the main queue run until the condition holds; false when it does not in time.
inline bool waitUntil(const std::function<bool()> &condition, int milliseconds = 8000) {
    return QTest::qWaitFor(condition, milliseconds);
}

/// A pasteboard on the private desktop, whose clipboard is nobody's at the start.
class X11PasteboardFixture : public testing::Test {
protected:
    X11PasteboardFixture() { clearClipboard(); }

    static void clearClipboard() {
        TestOwner owner;
        owner.own({});
        owner.clear();
    }

    void start(const SelectionLimits &limits = shortLimits()) {
        m_pasteboard = std::make_unique<X11Pasteboard>(limits);
        m_count = m_pasteboard->changeCount();
    }
    void stop() { m_pasteboard.reset(); }
    X11Pasteboard &pasteboard() { return *m_pasteboard; }

    /// True when the count has moved since the last call; bounded.
    [[nodiscard]] bool changed(int milliseconds = 8000) {
        const bool hasMoved = waitUntil([this] { return m_pasteboard->changeCount() != m_count; }, milliseconds);
        m_steps = m_pasteboard->changeCount() - m_count;
        m_count = m_pasteboard->changeCount();
        return hasMoved;
    }
    /// True when all that is fetched has been fetched, and no change was told since the last call of `changed`.
    [[nodiscard]] testing::AssertionResult settles() {
        if (!waitUntil(isReaderAtRest, 30000))
            return testing::AssertionFailure() << "something is being fetched all the time";
        QCoreApplication::processEvents(); // what the reader has told
        if (m_pasteboard->changeCount() != m_count)
            return testing::AssertionFailure() << "the count has moved by " << m_pasteboard->changeCount() - m_count;
        return testing::AssertionSuccess();
    }
    /// By how much the last `changed` saw it move.
    [[nodiscard]] int steps() const { return m_steps; }

    /// A copy by a program that behaves arrives. The trial after every misdeed.
    [[nodiscard]] testing::AssertionResult nextCopyIsSeen() {
        TestOwner next;
        next.ownText("the next copy");
        // A newer owner ends every waiting, so the limits of the older do not count here.
        const bool isSeen = waitUntil([this] { return pasteboard().string() == QStringLiteral("the next copy"); });
        if (isSeen)
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "the next copy was not seen";
    }

    std::unique_ptr<X11Pasteboard> m_pasteboard;
    int m_count = 0;
    int m_steps = 0;
};

} // namespace tavrine

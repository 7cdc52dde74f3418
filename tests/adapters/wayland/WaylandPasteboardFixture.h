#pragma once

#include "adapters/pasteboard/ShortLimits.h"
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/wayland/TestPaster.h"
#include "adapters/wayland/TestSource.h"
#include "adapters/wayland/WaylandPasteboard.h"

#include <QTest>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine {

/// Lets the main queue run until the condition holds; false when it does not in time.
inline bool waitUntil(const std::function<bool()> &condition, int milliseconds = 10000) {
    return QTest::qWaitFor(condition, milliseconds);
}

/// As on every desktop, and with all the time that a busy compositor needs at the start: what is copied before it has
/// answered is no change.
inline SelectionLimits patientLimits() {
    SelectionLimits limits = shortLimits();
    limits.start = std::chrono::seconds(20);
    limits.answer = limits.stall = std::chrono::seconds(3); // of a program that a busy machine keeps waiting
    limits.total = std::chrono::seconds(9);
    limits.outgoingStall = SelectionLimits().outgoingStall;
    return limits;
}

/// A pasteboard in the private session, whose clipboard is nobody's at the start.
class WaylandPasteboardFixture : public testing::Test {
protected:
    WaylandPasteboardFixture() { TestSource().clear(); }

    void start(SelectionLimits limits = patientLimits()) {
        limits.start = patientLimits().start;
        m_pasteboard =
            std::make_unique<WaylandPasteboard>([this](const std::string &reason) { m_lost = reason; }, limits);
        m_count = m_pasteboard->changeCount();
    }
    void stop() { m_pasteboard.reset(); }
    WaylandPasteboard &pasteboard() { return *m_pasteboard; }

    /// True when the count has moved since the last call; bounded.
    [[nodiscard]] bool changed(int milliseconds = 10000) {
        const bool hasMoved = waitUntil([this] { return m_pasteboard->changeCount() != m_count; }, milliseconds);
        m_steps = m_pasteboard->changeCount() - m_count;
        m_count = m_pasteboard->changeCount();
        return hasMoved;
    }
    /// By how much the last `changed` saw it move.
    [[nodiscard]] int steps() const { return m_steps; }

    [[nodiscard]] bool hasType(const char *type) {
        const auto types = pasteboard().types();
        return types && types->contains(QLatin1String(type));
    }

    /// A copy by a program that behaves arrives. The trial after every misdeed, and the proof that nothing more came
    /// before it: the count moves by one.
    [[nodiscard]] testing::AssertionResult nextCopyIsSeen() {
        TestSource next;
        const QString text = QStringLiteral("the next copy, number %1").arg(++m_copies);
        next.ownText(text.toUtf8());
        if (waitUntil([&] { return pasteboard().string() == text; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "the next copy was not seen";
    }
    /// The program ends, and what it had is ours.
    [[nodiscard]] bool endAndWaitForTheKeeper(TestSource &owner) {
        TestPaster paster;
        const int before = paster.notices();
        owner.end();
        return waitUntil([&] { return paster.notices() >= before + 2 && paster.isOwned(); });
    }

    std::unique_ptr<WaylandPasteboard> m_pasteboard;
    int m_count = 0;
    int m_steps = 0;
    int m_copies = 0;
    std::string m_lost;
};

} // namespace tavrine

#pragma once

#include "support/SampleLog.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace tavrine::test {

/// `Screen` is a desk with a screen that the test paints on: `streams()`, `display()`, `paint(area, colour)` in pixels
/// of the display, `addWindow()` and `removeWindow()` of another program, `eventually(condition)`, `settle()`.
template <class Screen>
class ScreenStreamContract : public ::testing::Test {
protected:
    static constexpr QRect area{40, 60, 200, 100};

    std::unique_ptr<ScreenStream> make(std::optional<quint32> display = {}) {
        ScreenStreamConfiguration configuration;
        configuration.sourceRect = area;
        configuration.width = area.width();
        configuration.height = area.height();
        configuration.showsCursor = false;
        configuration.queueDepth = 3;
        return screen.streams().makeStream(
            {display.value_or(screen.display()), {}}, configuration,
            {[this](const ScreenSample &sample) { log.take(sample); }, [this](const QString &) { ++unexpectedEnds; }});
    }
    void start(ScreenStream &stream) {
        stream.startCapture([this](std::optional<QString> error) {
            ++startAnswers;
            startError = std::move(error);
        });
    }
    void stop(ScreenStream &stream) {
        stream.stopCapture([this](std::optional<QString> error) {
            ++stopAnswers;
            stopError = std::move(error);
        });
    }
    std::unique_ptr<ScreenStream> started() {
        auto stream = make();
        start(*stream);
        EXPECT_TRUE(screen.eventually([this] { return startAnswers == 1 && log.count() >= 1; }));
        EXPECT_EQ(startError, std::nullopt) << startError.value_or(QString()).toStdString();
        screen.settle(); // what the desktop itself still changes
        return stream;
    }
    [[nodiscard]] bool changes(size_t entry, QPoint place) const {
        const auto changed = log.entries().at(entry).changed;
        return std::any_of(changed.begin(), changed.end(), [&](const QRect &each) { return each.contains(place); });
    }

    SampleLog log;
    Screen screen;
    int startAnswers = 0;
    std::optional<QString> startError;
    int stopAnswers = 0;
    std::optional<QString> stopError;
    int unexpectedEnds = 0;
};

TYPED_TEST_SUITE_P(ScreenStreamContract);

TYPED_TEST_P(ScreenStreamContract, theContentNamesDisplaysAndWindowsInALaterTurnOnce) {
    const WindowNumber window = this->screen.addWindow();
    int answers = 0;
    ShareableContent content;
    this->screen.streams().getShareableContent([&](std::variant<QString, ShareableContent> answer) {
        ++answers;
        content = std::get<ShareableContent>(answer);
    });
    EXPECT_EQ(answers, 0);
    ASSERT_TRUE(this->screen.eventually([&] { return answers == 1; }));
    EXPECT_TRUE(content.displays.contains(ShareableDisplay{this->screen.display()}));
    if (!this->screen.streams().tellsWindows()) {
        EXPECT_TRUE(content.windows.isEmpty());
        return;
    }
    EXPECT_TRUE(content.windows.contains(ShareableWindow{window}));

    this->screen.removeWindow(window);
    this->screen.streams().getShareableContent([&](std::variant<QString, ShareableContent> answer) {
        ++answers;
        content = std::get<ShareableContent>(answer);
    });
    ASSERT_TRUE(this->screen.eventually([&] { return answers == 2; }));
    EXPECT_FALSE(content.windows.contains(ShareableWindow{window}));
}

TYPED_TEST_P(ScreenStreamContract, theFirstSampleIsTheWholePictureWithoutAnyChange) {
    this->screen.paint(this->area.adjusted(-5, -5, 5, 5), 0xff204060);
    this->screen.settle();
    const auto stream = this->make();
    this->start(*stream);
    EXPECT_EQ(this->startAnswers, 0);
    ASSERT_TRUE(this->screen.eventually([this] { return this->startAnswers == 1 && this->log.count() >= 1; }));
    const auto first = this->log.entries().front();
    EXPECT_EQ(first.status, static_cast<int>(ScreenFrameStatus::complete));
    EXPECT_EQ(first.size, this->area.size());
    EXPECT_EQ(first.number, 1U);
    EXPECT_TRUE(this->changes(0, {0, 0}) && this->changes(0, {199, 99}));
    EXPECT_EQ(first.picture.pixel(0, 0) & 0xffffffU, 0x204060U);
    EXPECT_EQ(first.picture.pixel(199, 99) & 0xffffffU, 0x204060U);
}

TYPED_TEST_P(ScreenStreamContract, aChangeGivesOneMoreFrameThatTellsWhereItIs) {
    const auto stream = this->started();
    const size_t before = this->log.count();
    this->screen.paint(QRect(this->area.topLeft() + QPoint(20, 30), QSize(10, 10)), 0xffabcdef);
    ASSERT_TRUE(this->screen.eventually([&] { return this->log.count() > before; }));
    this->screen.settle();
    ASSERT_EQ(this->log.count(), before + 1);
    EXPECT_TRUE(this->changes(before, {20, 30}) && this->changes(before, {29, 39}));
    EXPECT_FALSE(this->changes(before, {150, 80}));
    const auto entry = this->log.last();
    EXPECT_EQ(entry.picture.pixel(25, 35) & 0xffffffU, 0xabcdefU);
    EXPECT_EQ(entry.number, this->log.entries().at(before - 1).number + 1);
}

TYPED_TEST_P(ScreenStreamContract, whatChangesOutsideTheAreaGivesNoFrame) {
    const auto stream = this->started();
    const size_t before = this->log.count();
    this->screen.paint(QRect(this->area.bottomRight() + QPoint(10, 10), QSize(50, 50)), 0xffabcdef);
    this->screen.settle();
    EXPECT_EQ(this->log.count(), before);
}

TYPED_TEST_P(ScreenStreamContract, framesAreNeverSoonerThanTheInterval) {
    const auto stream = this->started();
    for (quint32 i = 0; i < 40; ++i) {
        this->screen.paint(this->area, 0xff000000 + i * 5);
        static_cast<void>(this->screen.passTime(std::chrono::milliseconds(4)));
    }
    const auto entries = this->log.entries();
    ASSERT_GT(entries.size(), 3U);
    for (size_t i = 1; i < entries.size(); ++i) {
        EXPECT_GE(entries[i].time - entries[i - 1].time, ScreenStreamConfiguration().minimumFrameInterval);
        EXPECT_EQ(entries[i].number, entries[i - 1].number + 1);
    }
}

TYPED_TEST_P(ScreenStreamContract, withAllFramesHeldChangesWaitAndComeTogetherWhenOneIsLetGo) {
    this->log.setKeeps(true);
    const auto stream = this->make();
    this->start(*stream);
    ASSERT_TRUE(this->screen.eventually([this] { return this->log.count() >= 1; }));
    for (quint32 i = 0; i < 6 && this->log.count() < 3; ++i) {
        this->screen.paint(this->area, 0xff000010 + i);
        this->screen.settle();
    }
    ASSERT_EQ(this->log.count(), 3U);
    this->screen.paint(QRect(this->area.topLeft(), QSize(4, 4)), 0xff112233);
    this->screen.settle();
    this->screen.paint(QRect(this->area.bottomRight() - QPoint(3, 3), QSize(4, 4)), 0xff445566);
    this->screen.settle();
    EXPECT_EQ(this->log.count(), 3U);

    auto held = this->log.takeKept();
    std::vector<int> buffers;
    for (const auto &frame : held)
        buffers.push_back(frame->buffer);
    std::sort(buffers.begin(), buffers.end());
    EXPECT_EQ(buffers, (std::vector{0, 1, 2}));
    held.clear();
    ASSERT_TRUE(this->screen.eventually([this] { return this->log.count() >= 4; }));
    const auto entry = this->log.entries().at(3);
    EXPECT_EQ(entry.number, 4U);
    EXPECT_TRUE(this->changes(3, {1, 1}) && this->changes(3, {198, 98}));
    EXPECT_EQ(entry.picture.pixel(1, 1) & 0xffffffU, 0x112233U);
    EXPECT_EQ(entry.picture.pixel(198, 98) & 0xffffffU, 0x445566U);
}

TYPED_TEST_P(ScreenStreamContract, aHeldFrameKeepsItsPictureWhateverComesAndWhenTheStreamIsGone) {
    this->screen.paint(this->area, 0xff0a0b0c);
    this->screen.settle();
    this->log.setKeeps(true);
    auto stream = this->started();
    const auto held = this->log.takeKept();
    this->log.setKeeps(false);
    this->screen.paint(this->area, 0xff998877);
    this->screen.settle();
    stream.reset();
    this->screen.settle();
    EXPECT_EQ(pictureOf(*held.front()).pixel(3, 3) & 0xffffffU, 0x0a0b0cU);
}

TYPED_TEST_P(ScreenStreamContract, afterTheStopNoSampleComes) {
    const auto stream = this->started();
    this->stop(*stream);
    EXPECT_EQ(this->stopAnswers, 0);
    ASSERT_TRUE(this->screen.eventually([this] { return this->stopAnswers == 1; }));
    EXPECT_EQ(this->stopError, std::nullopt);
    const size_t before = this->log.count();
    this->screen.paint(this->area, 0xff998877);
    this->screen.settle();
    EXPECT_EQ(this->log.count(), before);
    EXPECT_EQ(this->stopAnswers, 1);
    EXPECT_EQ(this->startAnswers, 1);
    EXPECT_EQ(this->unexpectedEnds, 0);
}

TYPED_TEST_P(ScreenStreamContract, stoppingWhatDoesNotRunIsAnError) {
    const auto stream = this->make();
    this->stop(*stream);
    ASSERT_TRUE(this->screen.eventually([this] { return this->stopAnswers == 1; }));
    EXPECT_TRUE(this->stopError.has_value());

    const auto other = this->started();
    this->stop(*other);
    ASSERT_TRUE(this->screen.eventually([this] { return this->stopAnswers == 2; }));
    this->stop(*other);
    ASSERT_TRUE(this->screen.eventually([this] { return this->stopAnswers == 3; }));
    EXPECT_TRUE(this->stopError.has_value());
}

TYPED_TEST_P(ScreenStreamContract, aDisplayThatIsNotThereIsAnErrorOfTheStart) {
    const auto stream = this->make(this->screen.display() + 1);
    this->start(*stream);
    ASSERT_TRUE(this->screen.eventually([this] { return this->startAnswers == 1; }));
    EXPECT_TRUE(this->startError.has_value());
    this->screen.settle();
    EXPECT_EQ(this->log.count(), 0U);
}

TYPED_TEST_P(ScreenStreamContract, aDroppedStreamSaysNothingAnyMore) {
    auto stream = this->make();
    this->start(*stream);
    stream.reset();
    this->screen.settle();
    EXPECT_EQ(this->startAnswers, 0);
    EXPECT_EQ(this->log.count(), 0U);

    stream = this->started();
    const size_t before = this->log.count();
    this->stop(*stream);
    stream.reset();
    this->screen.paint(this->area, 0xff998877);
    this->screen.settle();
    EXPECT_EQ(this->stopAnswers, 0);
    EXPECT_EQ(this->log.count(), before);
}

REGISTER_TYPED_TEST_SUITE_P(ScreenStreamContract, theContentNamesDisplaysAndWindowsInALaterTurnOnce,
                            theFirstSampleIsTheWholePictureWithoutAnyChange, aChangeGivesOneMoreFrameThatTellsWhereItIs,
                            whatChangesOutsideTheAreaGivesNoFrame, framesAreNeverSoonerThanTheInterval,
                            withAllFramesHeldChangesWaitAndComeTogetherWhenOneIsLetGo,
                            aHeldFrameKeepsItsPictureWhateverComesAndWhenTheStreamIsGone, afterTheStopNoSampleComes,
                            stoppingWhatDoesNotRunIsAnError, aDisplayThatIsNotThereIsAnErrorOfTheStart,
                            aDroppedStreamSaysNothingAnyMore);

} // namespace tavrine::test

#pragma once

#include "adapters/fake/FakeFileIcons.h"
#include "adapters/fake/FakeSystemSounds.h"
#include "adapters/fake/VirtualTime.h"
#include "shelf/NotchViewModel.h"

#include <QSet>

#include <cstdio>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

inline QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

inline QUrl file(const char *path) {
    return QUrl::fromLocalFile(text(path));
}

inline QImage picture(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    return image;
}

/// The shelf over fakes. What is printed is kept; files are those that a test names.
class ShelfTest : public testing::Test {
protected:
    ShelfTest() { testing::internal::CaptureStdout(); }
    ~ShelfTest() override {
        time.advance(1h); // what was still to come does no harm
        const std::string printed = testing::internal::GetCapturedStdout();
        if (HasFailure()) // why it failed is among it
            std::printf("%s", printed.c_str());
    }

    [[nodiscard]] NotchViewModel::Ports modelPorts() {
        return {.time = time,
                .sounds = sounds,
                .icons = icons,
                .fileExists = [this](const QString &path, const std::function<void(bool)> &answer) {
                    ++checks;
                    answer(files.contains(path));
                }};
    }
    /// What was printed since the last call.
    std::string output() {
        const std::string printed = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return printed;
    }

    VirtualTime time;
    FakeSystemSounds sounds;
    FakeFileIcons icons{time};
    QSet<QString> files; ///< paths at which there is something
    int checks = 0;      ///< how often that was asked
};

} // namespace tavrine

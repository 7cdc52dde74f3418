// The colour sampler of a Wayland compositor and what it grants, in a session of sway.
#include "adapters/wayland/WaylandAccess.h"
#include "adapters/wayland/WaylandColorSampler.h"
#include "contracts/ColorSamplerContract.h"
#include "support/Eventually.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QProcess>

namespace tavrine::test {
namespace {

using tavrine::testing::WaylandHand;
using tavrine::testing::WaylandPattern;

class WaylandScreen {
public:
    WaylandScreen() { hand.move(away); }
    /// Who is on the screen when a test has failed must not be there for the next one.
    ~WaylandScreen() {
        if (isShown())
            hand.tap(KEY_ESC);
    }

    [[nodiscard]] ColorSamplers &samplers() { return m_samplers; }
    [[nodiscard]] QColor colour() const { return QColor::fromRgb(WaylandPattern::colourAt(0, place.x(), place.y())); }
    /// By the magnifier, which hides the pattern beside the pointer. That stands away from the place that is taken:
    /// this compositor draws it into what it shows of its outputs.
    [[nodiscard]] bool isShown() const {
        const QPoint beside = away + QPoint(70, 70);
        return seenAt(beside) != (WaylandPattern::colourAt(0, beside.x(), beside.y()) & 0xffffffU);
    }
    void take() {
        EXPECT_TRUE(eventually([this] { return isShown(); }));
        hand.click(place);
        m_isAnswered = true;
    }
    void cancel() {
        EXPECT_TRUE(eventually([this] { return isShown(); }));
        hand.tap(KEY_ESC);
        m_isAnswered = true;
    }
    /// A program starts or ends in between.
    void settle() {
        if (m_isAnswered)
            EXPECT_TRUE(eventually([this] { return m_samplers.running() == 0; }));
        else
            EXPECT_TRUE(eventually([this] { return m_samplers.running() == 1 && isShown(); }));
    }

    const QPoint place{321, 234};

private:
    static constexpr QPoint away{900, 400};

    [[nodiscard]] static QRgb seenAt(QPoint point) {
        QProcess grim;
        grim.start(QStringLiteral("grim"),
                   {QStringLiteral("-t"), QStringLiteral("ppm"), QStringLiteral("-g"),
                    QStringLiteral("%1,%2 1x1").arg(point.x()).arg(point.y()), QStringLiteral("-")});
        grim.waitForFinished();
        const QImage image = QImage::fromData(grim.readAllStandardOutput());
        return image.isNull() ? 0 : image.pixel(0, 0) & 0xffffffU;
    }

    WaylandHand hand;
    WaylandPattern pattern;
    WaylandColorSamplers m_samplers;
    bool m_isAnswered = false;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Wayland, ColorSamplerContract, WaylandScreen);

TEST(WaylandAccess, whatTheCompositorOffersIsGranted) {
    WaylandAccess access;
    EXPECT_TRUE(access.isScreenCaptureGranted());
    EXPECT_TRUE(access.isAccessibilityTrusted());
    int answers = 0;
    std::optional<QString> refusal(QStringLiteral("no answer"));
    access.probeScreenCapture([&](std::optional<QString> error) {
        ++answers;
        refusal = std::move(error);
    });
    EXPECT_EQ(answers, 0);
    ASSERT_TRUE(eventually([&] { return answers == 1; }));
    EXPECT_EQ(refusal, std::nullopt);
}

TEST(WaylandAccess, withoutACompositorNothingIs) {
    const QByteArray display = qgetenv("WAYLAND_DISPLAY");
    qputenv("WAYLAND_DISPLAY", "nobody-0");
    WaylandAccess access;
    EXPECT_FALSE(access.isScreenCaptureGranted());
    EXPECT_FALSE(access.isAccessibilityTrusted());
    qputenv("WAYLAND_DISPLAY", display);
}

} // namespace
} // namespace tavrine::test

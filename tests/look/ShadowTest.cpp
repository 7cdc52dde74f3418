#include "look/Shadow.h"

#include "look/Metrics.h"
#include "look/Theme.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

constexpr QSize panelSize(320, 450);

/// The window round a panel, with nothing in the place of the panel.
QImage windowIn(const Theme &theme, int scale = 1) {
    QImage image(panelSize.grownBy(shadowMargins) * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintPanelShadow(painter, QRectF(QPointF(shadowMargins.left(), shadowMargins.top()), panelSize), theme);
    return image;
}

TEST(Shadow, endsBeforeTheWindowDoes) {
    for (const Theme &theme : {lightTheme(), darkTheme()}) {
        const QImage picture = windowIn(theme);
        const int faint = theme.shadow.alpha() / 8; // an edge of this is not seen
        for (int x = 0; x < picture.width(); ++x) {
            ASSERT_LE(qAlpha(picture.pixel(x, 0)), faint);
            ASSERT_LE(qAlpha(picture.pixel(x, picture.height() - 1)), faint);
        }
        for (int y = 0; y < picture.height(); ++y) {
            ASSERT_LE(qAlpha(picture.pixel(0, y)), faint);
            ASSERT_LE(qAlpha(picture.pixel(picture.width() - 1, y)), faint);
        }
    }
}

TEST(Shadow, liesBelowThePanel) {
    const QImage picture = windowIn(lightTheme());
    EXPECT_GT(qAlpha(picture.pixel(picture.width() / 2, picture.height() - shadowMargins.bottom() + 4)), 10);
}

TEST(Shadow, aDarkPanelHasAnEdgeOnItsOuterSideThatIsSmoothRoundTheCorners) {
    Theme withoutEdge = darkTheme();
    withoutEdge.isDark = false;
    for (const int scale : {1, 2}) {
        const QImage with = windowIn(darkTheme(), scale);
        const QImage without = windowIn(withoutEdge, scale);
        const auto edgeAt = [&](int x, int y) { return qAlpha(with.pixel(x, y)) - qAlpha(without.pixel(x, y)); };
        const int left = shadowMargins.left() * scale;
        const int top = shadowMargins.top() * scale;
        const int whole = edgeAt(left - 1, with.height() / 2);
        EXPECT_GT(whole, 30) << "right beside the panel";
        EXPECT_EQ(edgeAt(left - 2, with.height() / 2), 0) << "a pixel wide";
        int covered = 0;
        for (int y = top; y < top + int(radius::panel) * scale; ++y)
            for (int x = left; x < left + int(radius::panel) * scale; ++x)
                covered += edgeAt(x, y) > whole / 8 && edgeAt(x, y) < whole / 2; // in part only
        EXPECT_GT(covered, int(radius::panel) * scale / 2) << scale;
    }
}

} // namespace
} // namespace tavrine::look

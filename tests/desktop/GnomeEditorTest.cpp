// What follows a capture on GNOME under Wayland: the card and the editor, over a program that speaks Wayland alone.
#include "desktop/Capturing.h"
#include "desktop/GnomeFixture.h"

#include <QDir>
#include <QImage>

#include <algorithm>

using namespace tavrine::testing;
using namespace std::chrono_literals;

namespace {

constexpr auto editorWindow = "Tavrine Snap Editor";
constexpr quint32 control = 29;
constexpr quint32 cKey = 46;
constexpr quint32 zKey = 44;

class GnomeCard : public Gnome {
protected:
    void SetUp() override {
        Gnome::SetUp();
        QDir().mkpath(folder());
        ASSERT_TRUE(start("<key>snipUseSaveDefault</key><true/><key>snipSaveDirectoryPath</key><string>" +
                          folder().toUtf8() + "</string>"));
        m_pattern = lineOf(TAVRINE_DESKTOP_CLIENTS "/gtk-pattern", "wayland");
        ASSERT_TRUE(m_pattern->waitForFocus());
        hands.movePointer({640, 400});
        ASSERT_TRUE(capture(QRect(area.topLeft(), area.size() - QSize(1, 1))));
        ASSERT_TRUE(waitUntil([this] { return copied() == patternIn(area); }, gnomePatience));
    }

    [[nodiscard]] QString folder() const { return program.home() + QStringLiteral("/captures"); }
    [[nodiscard]] QStringList files() const { return QDir(folder()).entryList(QDir::Files); }
    [[nodiscard]] static QImage copied() {
        return QImage::fromData(tavrine::testing::paste("image/png")).convertToFormat(QImage::Format_RGB32);
    }
    /// The place of the one window with that title; empty while there is none.
    [[nodiscard]] QRect placeOf(const char *title) const {
        const auto windows = desktop.windowsTitled(QLatin1String(title));
        return windows.size() == 1 ? desktop.geometry(windows.front()) : QRect();
    }
    /// Until it does what it shall: what comes in by moving is not there yet.
    template <class Condition>
    [[nodiscard]] bool clickInCardUntil(QPoint place, Condition condition) {
        return waitUntil(
            [&] {
                const QRect card = placeOf(captureCard);
                if (!card.isEmpty() && pointAt(card.topLeft() + place)) {
                    hands.pressButton();
                    hands.releaseButton();
                }
                return waitUntil(condition, 3s);
            },
            gnomePatience);
    }

    const QRect area{330, 200, 620, 300};

private:
    std::unique_ptr<ForeignWindow> m_pattern;
};

TEST_F(GnomeCard, savesTheCapturePixelByPixelAndGoes) {
    const QRect card = placeOf(captureCard);
    ASSERT_TRUE(clickInCardUntil({170, card.height() - 34}, [this] { return files().size() == 1; }));
    const QImage saved(folder() + QLatin1Char('/') + files().constFirst());
    EXPECT_EQ(saved.convertToFormat(QImage::Format_RGB32), patternIn(area));
    EXPECT_TRUE(waitUntil([this] { return !desktop.isShown(captureCard); }, gnomePatience));
}

class GnomeEditor : public GnomeCard {
protected:
    void SetUp() override {
        GnomeCard::SetUp();
        ASSERT_TRUE(clickInCardUntil(onThumbnail, [this] { return desktop.hasKeyboard(editorWindow); }));
    }
    /// Copies until the clipboard has such a picture.
    template <class Condition>
    [[nodiscard]] bool copies(Condition condition) {
        return waitUntil(
            [&] {
                hands.chord({control, cKey});
                return waitUntil([&] { return condition(copied()); }, 1s);
            },
            gnomePatience);
    }
    /// Where a picture is not the one that was captured.
    [[nodiscard]] QRect changed(const QImage &picture) const {
        const QImage before = patternIn(area);
        if (picture.size() != before.size())
            return {};
        QRect all;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) != before.pixel(x, y))
                    all |= QRect(x, y, 1, 1);
        return all;
    }
};

TEST_F(GnomeEditor, opensOverAWaylandProgramAndItsPictureIsCopiedAsItIs) {
    copyOnWayland("something else");
    EXPECT_TRUE(copies([this](const QImage &picture) { return picture == patternIn(area); }));
}

TEST_F(GnomeEditor, aStrokeOfTheMouseIsOnThePictureAndIsTakenBackByAKey) {
    const QRect window = placeOf(editorWindow);
    // The picture is shown at its own size, in the middle of what the bar leaves.
    const QPoint corner = window.topLeft() + QPoint((window.width() - area.width()) / 2, 148);
    const QRect stroke(QPoint(400, 60), QSize(120, 80));
    ASSERT_TRUE(pointAt(window.bottomLeft() + QPoint(276 + 36 * 5, -28))); // the rectangle
    hands.pressButton();
    hands.releaseButton();
    ASSERT_TRUE(dragAcross(stroke.translated(corner)));
    QRect drawn;
    ASSERT_TRUE(copies([&](const QImage &picture) {
        drawn = changed(picture);
        return !drawn.isEmpty();
    }));
    constexpr int pen = 12;
    EXPECT_TRUE(stroke.adjusted(-pen, -pen, pen, pen).contains(drawn)) << drawn.x() << ' ' << drawn.y();
    EXPECT_TRUE(drawn.contains(stroke.adjusted(pen, pen, -pen, -pen))) << drawn.width() << ' ' << drawn.height();
    hands.chord({control, zKey});
    EXPECT_TRUE(copies([this](const QImage &picture) { return picture == patternIn(area); }));
}

} // namespace

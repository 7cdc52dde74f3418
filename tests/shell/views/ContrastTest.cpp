// Every word of every view on the ground on which it is seen: 4.5:1, and 3:1 where letters are large, as the Web
// Content Accessibility Guidelines have it. The ground is measured in a picture of the view.
#include "look/Theme.h"
#include "shell/views/ProgramViews.h"
#include "support/PaintedWords.h"

#include <QHash>
#include <QLabel>

namespace tavrine {
namespace {

/// What most of the place shows: letters cover less of it than the ground between them.
QColor groundAt(const QImage &picture, const QRect &place) {
    QHash<QRgb, int> counts;
    QRgb most = 0;
    for (int y = place.top(); y <= place.bottom(); ++y)
        for (int x = place.left(); x <= place.right(); ++x)
            if (const QRgb colour = picture.pixel(x, y); ++counts[colour] > counts.value(most))
                most = colour;
    return QColor(most);
}

bool isLarge(const QFont &font) {
    return font.pixelSize() >= 24 || (font.weight() >= QFont::Bold && font.pixelSize() >= 19);
}

bool isDisabled(QWidget &view, const QRect &place) {
    const QWidget *under = view.childAt(place.center());
    return under && !under->isEnabled();
}

/// A line for each text that is too faint.
QStringList faintWords(QWidget &view, const QColor &behind) {
    test::WordsDevice device(view.size());
    view.render(&device);
    EXPECT_FALSE(device.painted().empty()) << view.metaObject()->className();
    QImage picture(view.size(), QImage::Format_RGB32);
    picture.fill(behind);
    view.render(&picture);
    QStringList faint;
    for (const test::PaintedWord &word : device.painted()) {
        const QRect place = word.place.toAlignedRect() & picture.rect();
        if (place.width() < 3 || place.height() < 3 || word.text.trimmed().isEmpty() || word.colour.alpha() == 0 ||
            isDisabled(view, place))
            continue;
        const QColor ground = groundAt(picture, place);
        const double ratio = look::contrast(look::over(ground, word.colour), ground);
        if (ratio < (isLarge(word.font) ? 3.0 : 4.5) - 0.005)
            faint.append(QStringLiteral("“%1” %2 px: %3 on %4 is %5:1")
                             .arg(word.text)
                             .arg(word.font.pixelSize())
                             .arg(word.colour.name(QColor::HexArgb), ground.name())
                             .arg(ratio, 0, 'f', 2));
    }
    return faint;
}

class Contrast : public ProgramViews, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override { start(GetParam() ? ColorScheme::dark : ColorScheme::light); }

    Visit expectStrongWords() {
        return [](QWidget &view, const QString &name) {
            for (const QString &line :
                 faintWords(view, GetParam() ? QColor(0x12, 0x14, 0x1A) : QColor(0xD8, 0xDE, 0xE8))) {
                ADD_FAILURE() << name.toStdString() << ": " << line.toStdString();
            }
        };
    }
};
INSTANTIATE_TEST_SUITE_P(Themes, Contrast, testing::Bool(),
                         [](const auto &theme) { return theme.param ? "dark" : "light"; });

TEST_P(Contrast, theWordsOfTheSettingsStandOut) {
    visitSettings(expectStrongWords());
}

TEST_P(Contrast, theWordsOfTheMenuStandOut) {
    visitMenu(expectStrongWords());
}

TEST_P(Contrast, theWordsOfThePanelsStandOut) {
    visitPanels(expectStrongWords());
}

TEST_P(Contrast, theWordsOfTheEditorStandOut) {
    visitEditor(expectStrongWords());
}

TEST_P(Contrast, theWordsOfTheWelcomeWindowStandOut) {
    visitWelcome(expectStrongWords());
}

TEST_P(Contrast, theWordsOfToastsAndDialogsStandOut) {
    visitCards(expectStrongWords());
}

TEST_P(Contrast, theWordsOfACaptureStandOut) {
    visitCapture(expectStrongWords());
}

TEST_P(Contrast, theWordsOfTheRecordersOverlayStandOut) {
    visitRecording(expectStrongWords());
}

TEST(ContrastMeasured, findsWordsThatAreTooFaintAndOnlyThose) {
    QWidget view;
    QPalette white(Qt::white);
    view.setPalette(white);
    view.resize(300, 200);
    const auto add = [&view](const char *words, int y, int pixels, QRgb colour) {
        auto *label = new QLabel(text(words), &view);
        QFont font = label->font();
        font.setPixelSize(pixels);
        label->setFont(font);
        QPalette palette;
        palette.setColor(QPalette::WindowText, colour);
        label->setPalette(palette);
        label->setGeometry(0, y, 300, 40);
        return label;
    };
    add("just", 0, 13, qRgb(0x76, 0x76, 0x76));   // 4.54
    add("faint", 40, 13, qRgb(0x78, 0x78, 0x78)); // 4.42
    add("large", 80, 24, qRgb(0x78, 0x78, 0x78));
    add("off", 120, 13, qRgb(0xC0, 0xC0, 0xC0))->setEnabled(false);
    view.show();
    QStringList faint = faintWords(view, Qt::white);
    ASSERT_EQ(faint.size(), 1) << faint.join(u'\n').toStdString();
    EXPECT_TRUE(faint.first().startsWith(text("“faint”")));
}

} // namespace
} // namespace tavrine

#include "utilities/meter/SpeedImage.h"

#include "utilities/meter/SpeedCanvas.h"

namespace tavrine {
namespace {

constexpr int imageHeight = 22;
constexpr int widthConnected = 70;
constexpr int widthDisconnected = 92;
constexpr double pillRadius = 11;
constexpr double themeRadius = 6;
// All that is written stands in these rows of the wide picture.
constexpr int stripBottom = 3;
constexpr int stripHeight = 16;
constexpr QColor systemRed{255, 59, 48};

struct Colors {
    QColor text;
    QColor arrows;
};

constexpr QRectF noConnectionOval(8, 8, 6, 6); // where the symbol cannot be made
const auto noConnectionSymbol = QStringLiteral("wifi.slash");

/// What is filled: by the indicator, and by a theme.
struct Grounds {
    QRectF pill;
    double radius;
    QRectF theme;
};

Grounds groundsOfWide(double width) {
    return {{0, 0, width, imageHeight}, pillRadius, {2, 1, width - 4, 20}};
}

Grounds groundsOfStrip(double width) {
    return {{0, stripBottom, width, stripHeight}, stripHeight / 2.0, {2, stripBottom, width - 4, stripHeight}};
}

/// A disc would cut the figures off.
constexpr Grounds groundsOfSquare{{0, 0, imageHeight, imageHeight}, themeRadius, {0, 0, imageHeight, imageHeight}};

/// Fills the ground and says in which colours to go on.
Colors begin(SpeedCanvas &canvas, const SpeedPicture &picture, const Grounds &grounds, const QColor &label) {
    const SpeedThemeTraits &theme = traitsOf(picture.theme);
    const QColor arrows = picture.isAwake ? QColor(Qt::white) : theme.arrows;
    if (picture.isAwake && picture.indicator) {
        canvas.fillRounded(grounds.pill, grounds.radius, *picture.indicator);
        return {Qt::white, arrows};
    }
    if (!theme.background.isValid())
        return {label, arrows};
    canvas.fillRounded(grounds.theme, themeRadius, theme.background);
    return {theme.text, arrows};
}

void drawNoConnection(SpeedCanvas &canvas, const Colors &colors) {
    canvas.symbolOrOval({6, 5, 12, 12}, noConnectionSymbol, noConnectionOval, systemRed);
    canvas.text({21, 4, 69, 14}, QStringLiteral("No Connection"), {9, QFont::DemiBold, colors.text}, Qt::AlignLeft);
}

void drawBoth(SpeedCanvas &canvas, const SpeedPicture &picture, const Colors &colors) {
    const SpeedCanvas::Style arrows{8, QFont::Bold, colors.arrows};
    const SpeedCanvas::Style figures{8, QFont::Medium, colors.text};
    canvas.arrow({7, 3}, ArrowDirection::up, arrows);
    canvas.arrow({7, 11}, ArrowDirection::down, arrows);
    canvas.text({16, 3, 46, 9}, picture.upload.trimmed(), figures, Qt::AlignRight);
    canvas.text({16, 11, 46, 9}, picture.download.trimmed(), figures, Qt::AlignRight);
}

void drawOne(SpeedCanvas &canvas, const SpeedPicture &picture, const Colors &colors) {
    const SpeedCanvas::Style style{10, QFont::Medium, colors.text};
    const bool isUpload = picture.mode == SpeedDisplayMode::uploadOnly;
    const double height = SpeedCanvas::lineHeight(style.size);
    canvas.textWithArrow({4, (imageHeight - height) / 2 + 1, 62, height},
                         isUpload ? ArrowDirection::up : ArrowDirection::down,
                         isUpload ? picture.upload : picture.download, style);
}

QImage drawWide(const SpeedPicture &picture, const StatusGround &ground) {
    const int width = picture.isConnected ? widthConnected : widthDisconnected;
    SpeedCanvas canvas(width, ground.isStrip ? stripHeight : imageHeight, ground.scale,
                       ground.isStrip ? stripBottom : 0);
    const Colors colors =
        begin(canvas, picture, ground.isStrip ? groundsOfStrip(width) : groundsOfWide(width), ground.label);
    if (!picture.isConnected)
        drawNoConnection(canvas, colors);
    else if (picture.mode == SpeedDisplayMode::both)
        drawBoth(canvas, picture, colors);
    else
        drawOne(canvas, picture, colors);
    return canvas.image();
}

/// "12.3MB" as "12.3" and "MB", " 512 B" as "512" and "B".
std::pair<QString, QString> numberAndUnit(const QString &figure) {
    qsizetype end = figure.size();
    while (end > 0 && figure.at(end - 1).isLetter())
        --end;
    return {figure.left(end).trimmed(), figure.mid(end)};
}

QString shortFigure(const QString &figure) {
    const auto [number, unit] = numberAndUnit(figure);
    return number + unit.left(1);
}

QImage drawSquare(const SpeedPicture &picture, const StatusGround &ground) {
    SpeedCanvas canvas(imageHeight, imageHeight, ground.scale);
    const Colors colors = begin(canvas, picture, groundsOfSquare, ground.label);
    if (!picture.isConnected) {
        static_cast<void>(canvas.symbol({2, 2, 18, 18}, noConnectionSymbol, systemRed));
    } else if (picture.mode == SpeedDisplayMode::both) {
        const QString download = shortFigure(picture.download);
        const QString upload = shortFigure(picture.upload);
        const SpeedCanvas::Style style{canvas.sizeThatFits({download, upload}, 20, {9, QFont::Medium, {}}),
                                       QFont::Medium, colors.text};
        const double height = SpeedCanvas::lineHeight(style.size);
        canvas.text({1, 16 - height / 2, 20, height}, download, style, Qt::AlignRight);
        canvas.text({1, 6 - height / 2, 20, height}, upload, style, Qt::AlignRight);
    } else {
        const bool isUpload = picture.mode == SpeedDisplayMode::uploadOnly;
        const auto [number, unit] = numberAndUnit(isUpload ? picture.upload : picture.download);
        canvas.text({2, 10, 18, 12}, number, {11, QFont::DemiBold, colors.text}, Qt::AlignHCenter);
        canvas.textWithArrow({2, 1, 18, 9}, isUpload ? ArrowDirection::up : ArrowDirection::down, unit,
                             {8, QFont::Medium, colors.text});
    }
    return canvas.image();
}

QString identityOf(const SpeedPicture &picture) {
    const QString figures = !picture.isConnected ? QStringLiteral("none")
                            : picture.mode == SpeedDisplayMode::downloadOnly
                                ? QStringLiteral("down ") + picture.download
                            : picture.mode == SpeedDisplayMode::uploadOnly
                                ? QStringLiteral("up ") + picture.upload
                                : QStringLiteral("both ") + picture.download + QLatin1Char('/') + picture.upload;
    const QString awake = !picture.isAwake    ? QString()
                          : picture.indicator ? picture.indicator->name()
                                              : QStringLiteral("awake");
    return QStringLiteral("speed %1 %2 %3").arg(figures, awake, textOf(speedThemeTexts, picture.theme));
}

} // namespace

StatusImage speedImage(const SpeedPicture &picture) {
    return {.draw =
                [picture](const StatusGround &ground) {
                    return ground.isSquare ? drawSquare(picture, ground) : drawWide(picture, ground);
                },
            .width = picture.isConnected ? widthConnected : widthDisconnected,
            .height = imageHeight,
            .isTemplate = false,
            .identity = identityOf(picture)};
}

} // namespace tavrine

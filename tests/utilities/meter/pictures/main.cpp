// Shows the speed meter's pictures to people: meter_pictures FILE. Light panels on the left, dark ones on the right;
// each at scale 1 and 2, as trays show it that keep a picture's shape, as those do that scale it to the height of their
// icons, and as those that fit it into a square.

#include "utilities/meter/SpeedImage.h"

#include <QGuiApplication>
#include <QPainter>

using namespace tavrine;

namespace {

constexpr QColor lightPanel{0xeb, 0xeb, 0xeb};
constexpr QColor darkPanel{0x2d, 0x2d, 0x30};
constexpr QColor darkLabel{0x2e, 0x34, 0x36};
constexpr QColor lightLabel{0xf2, 0xf2, 0xf2};
constexpr int rowHeight = 54;
constexpr int halfWidth = 780;

void drawRow(QPainter &sheet, int y, const SpeedPicture &picture) {
    const StatusImage image = speedImage(picture);
    for (const bool isDark : {false, true}) {
        int x = isDark ? halfWidth : 0;
        sheet.fillRect(x, y, halfWidth, rowHeight, isDark ? darkPanel : lightPanel);
        x += 8;
        for (const auto &[isSquare, isStrip] : {std::pair(false, false), {false, true}, {true, false}})
            for (const double scale : {1.0, 2.0}) {
                const QImage drawn = image.draw({.scale = scale,
                                                 .label = isDark ? lightLabel : darkLabel,
                                                 .isSquare = isSquare,
                                                 .isStrip = isStrip});
                sheet.drawImage(x, y + (rowHeight - drawn.height()) / 2, drawn);
                x += drawn.width() + 16;
            }
    }
}

} // namespace

int main(int argc, char **argv) {
    const QGuiApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const auto download = QStringLiteral("12.3MB");
    const auto upload = QStringLiteral(" 517KB");
    QList<SpeedPicture> pictures;
    for (const auto &theme : speedThemeTexts)
        for (const auto &mode : speedDisplayModeTexts)
            pictures.append({.download = download, .upload = upload, .mode = mode.choice, .theme = theme.choice});
    for (const auto mode : {SpeedDisplayMode::both, SpeedDisplayMode::downloadOnly}) {
        pictures.append({.download = download, .upload = upload, .mode = mode, .isAwake = true});
        pictures.append(
            {.download = download, .upload = upload, .mode = mode, .isAwake = true, .indicator = QColor(0, 122, 255)});
    }
    pictures.append({.download = QStringLiteral("1023 B"), .upload = QStringLiteral("   0 B")});
    pictures.append(
        {.download = QStringLiteral("1024.0MB"), .upload = QStringLiteral("1000.5MB"), .mode = SpeedDisplayMode::both});
    pictures.append({.download = QStringLiteral("1024.0MB"), .upload = QStringLiteral("1000.5MB")});
    for (const auto &theme : speedThemeTexts)
        pictures.append({.download = download, .upload = upload, .theme = theme.choice, .isConnected = false});
    pictures.append({.download = download,
                     .upload = upload,
                     .isAwake = true,
                     .isConnected = false,
                     .indicator = QColor(255, 128, 0)});

    QImage sheet(2 * halfWidth, rowHeight * static_cast<int>(pictures.size()), QImage::Format_RGB32);
    QPainter painter(&sheet);
    for (int i = 0; i < pictures.size(); ++i)
        drawRow(painter, i * rowHeight, pictures[i]);
    painter.end();
    return sheet.save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}

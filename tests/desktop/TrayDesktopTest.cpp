// The status item in trays that people use, seen on the screen.

#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/StatusPixels.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/x11/XEmbedTrayIcon.h"
#include "shell/StatusIcon.h"
#include "support/Eventually.h"
#include "support/Program.h"
#include "support/StatusNotifierTray.h"
#include "utilities/meter/SpeedImage.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QStandardPaths>

#include <optional>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

QString words(const char *text) {
    return QString::fromLatin1(text);
}

constexpr QColor pillColor{255, 0, 170}; // on no desktop by itself

/// A panel with nothing but a tray, in the desktop environment's own configuration.
void configurePanel(const QString &darkMode) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           QStringLiteral("/xfce4/xfconf/xfce-perchannel-xml");
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/xfce4-panel.xml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="%1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="30"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)")
                   .arg(darkMode)
                   .toUtf8());
}

QImage screenShot() {
    const QString path = QDir::temp().filePath(QStringLiteral("tray-%1.png").arg(QCoreApplication::applicationPid()));
    static_cast<void>(outputOf(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), path}));
    const QImage shot(path);
    QFile::remove(path);
    return shot;
}

bool isNear(QColor a, QColor b) {
    return std::abs(a.red() - b.red()) < 12 && std::abs(a.green() - b.green()) < 12 &&
           std::abs(a.blue() - b.blue()) < 12;
}

/// Where pixels of `color` are on the screen.
QRect placeOf(QColor color, const QImage &shot = screenShot()) {
    QRect place;
    for (int y = 0; y < shot.height(); ++y)
        for (int x = 0; x < shot.width(); ++x)
            if (isNear(shot.pixelColor(x, y), color))
                place |= QRect(x, y, 1, 1);
    return place;
}

void click(QPoint place, int button) {
    static_cast<void>(outputOf(QStringLiteral("xdotool"),
                               {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
                                QStringLiteral("click"), QString::number(button)}));
}

class TrayOnTheDesktop : public testing::Test {
public:
    TrayOnTheDesktop() {
        std::vector<std::unique_ptr<TrayIcon>> trays;
        trays.push_back(std::make_unique<StatusNotifierItem>());
        trays.push_back(
            std::make_unique<XEmbedTrayIcon>([this](QPoint, const QString &text) { toolTips.append(text); }));
        item.emplace(std::move(trays));
        item->setImage(statusIcon(true, true, pillColor.name()));
        item->setOnPress([this](QPoint place, Seconds) { (button == 1 ? presses : others).append(place); });
        item->setOnSecondaryPress([this](QPoint place, Seconds) { (button == 2 ? presses : others).append(place); });
    }
    void startPanel(const QString &darkMode = QStringLiteral("true")) {
        configurePanel(darkMode);
        panel.emplace(QStringLiteral("xfce4-panel"), QStringList{QStringLiteral("--disable-wm-check")});
    }
    void startTrayer() {
        trayer.emplace(QStringLiteral("trayer"),
                       QStringList{QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--height"),
                                   QStringLiteral("24"), QStringLiteral("--widthtype"), QStringLiteral("request"),
                                   QStringLiteral("--tint"), QStringLiteral("0x303030"),
                                   QStringLiteral("--transparent"), QStringLiteral("true"), QStringLiteral("--alpha"),
                                   QStringLiteral("0")});
    }

    /// A panel that is just started takes its time.
    static bool isShown() {
        return eventually([] { return !placeOf(pillColor).isNull(); }, 40s);
    }

    QStringList toolTips;
    int button = 1;
    QList<QPoint> presses;
    QList<QPoint> others; ///< of another button than was pressed
    std::optional<TrayStatusItem> item;
    std::optional<Program> panel;
    std::optional<Program> trayer;
};

TEST_F(TrayOnTheDesktop, thePanelOfADesktopEnvironmentShowsTheIcon) {
    startPanel();
    item->setVisible(true);
    QRect place;
    ASSERT_TRUE(isShown());
    letPass(500ms); // the panel settles its layout
    place = placeOf(pillColor);
    EXPECT_NEAR(double(place.width()) / place.height(), 28.0 / 22.0, 0.2) << place.width() << " x " << place.height();
    // Its right button opens the panel's own menu for any icon without a menu on the bus.
    for (const int each : {1, 2}) { // the middle one is told apart
        button = each;
        presses.clear();
        click(place.center(), button);
        EXPECT_TRUE(eventually([&] { return !presses.isEmpty(); })) << "button " << button;
        ASSERT_FALSE(presses.isEmpty());
        EXPECT_TRUE(place.adjusted(-30, -30, 30, 30).contains(presses.constFirst()))
            << presses.constFirst().x() << ", " << presses.constFirst().y();
        EXPECT_TRUE(others.isEmpty());
    }
    item->setImage(statusIcon(false, false, {}));
    EXPECT_TRUE(eventually([&] { return placeOf(pillColor).isNull(); }));
    letPass(500ms);
}

TEST_F(TrayOnTheDesktop, thePanelShowsAWideImageAtFullHeightAndASquareOneAgainAfterIt) {
    startPanel();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    constexpr QColor meterColor{0, 170, 255};
    item->setImage({.draw =
                        [meterColor](const StatusGround &ground) {
                            QImage image(qRound(70 * ground.scale), qRound(22 * ground.scale),
                                         QImage::Format_ARGB32_Premultiplied);
                            image.fill(meterColor);
                            return image;
                        },
                    .width = 70,
                    .height = 22,
                    .isTemplate = false});
    EXPECT_TRUE(eventually([&] {
        const QRect place = placeOf(meterColor);
        return place.height() >= 20 && std::abs(double(place.width()) / place.height() - 70.0 / 22.0) < 0.2;
    }));
    EXPECT_TRUE(placeOf(pillColor).isNull());
    item->setImage(statusIcon(true, true, pillColor.name()));
    EXPECT_TRUE(eventually([&] { return placeOf(meterColor).isNull() && !placeOf(pillColor).isNull(); }));
}

TEST_F(TrayOnTheDesktop, theOlderTrayShowsTheSpeedMeterAtFullHeightWithTheWidthOfItsKind) {
    startTrayer();
    const auto isShownAt = [this](double width, bool isConnected) {
        item->setImage(speedImage({.download = QStringLiteral("12.3MB"),
                                   .upload = QStringLiteral("   0 B"),
                                   .isAwake = true,
                                   .isConnected = isConnected,
                                   .indicator = pillColor}));
        item->setVisible(true);
        return eventually([&] {
            const QRect place = placeOf(pillColor);
            return place.height() >= 22 && std::abs(place.width() * 22.0 / place.height() - width) < 3;
        });
    };
    EXPECT_TRUE(isShownAt(70, true));
    EXPECT_TRUE(isShownAt(92, false));
    EXPECT_TRUE(isShownAt(70, true));
}

TEST_F(TrayOnTheDesktop, symbolsAreDarkInALightTrayThatNamesNoColour) {
    trayer.emplace(words("trayer"), QStringList{words("--edge"), words("top"), words("--height"), words("24"),
                                                words("--widthtype"), words("request")});
    item->setImage(statusIcon(false, false, {}));
    item->setVisible(true);
    EXPECT_TRUE(eventually([] { return placeOf(darkSymbolColor).height() > 10; }));
}

TEST_F(TrayOnTheDesktop, theIconIsInAPanelThatRestarts) {
    item->setVisible(true);
    startPanel();
    ASSERT_TRUE(isShown());
    panel->end();
    ASSERT_TRUE(eventually([&] { return placeOf(pillColor).isNull(); }));
    startPanel();
    EXPECT_TRUE(isShown());
}

TEST_F(TrayOnTheDesktop, theOlderTrayShowsTheIconAndGetsItBackWhenItRestarts) {
    startTrayer();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    trayer->end();
    ASSERT_TRUE(eventually([&] { return placeOf(pillColor).isNull(); }));
    startTrayer();
    ASSERT_TRUE(isShown());
    item->setImage(statusIcon(false, false, {}));
    EXPECT_TRUE(eventually([&] { return placeOf(pillColor).isNull(); }));
}

TEST_F(TrayOnTheDesktop, theIconMovesFromTheOlderTrayToAPanelThatStarts) {
    startTrayer();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    const QRect inTrayer = placeOf(pillColor);
    startPanel();
    EXPECT_TRUE(eventually(
        [&] {
            const QRect now = placeOf(pillColor);
            return !now.isNull() && !now.intersects(inTrayer);
        },
        40s));
}

TEST_F(TrayOnTheDesktop, theIconIsInOneTrayOnlyAndReturnsToTheOlderOneWhenTheOtherEnds) {
    StatusNotifierTray other;
    startTrayer();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    other.start();
    EXPECT_TRUE(eventually([&] { return !other.items().isEmpty() && placeOf(pillColor).isNull(); }));
    other.end();
    EXPECT_TRUE(isShown());
}

TEST_F(TrayOnTheDesktop, aWatcherWithoutAHostIsNoTray) {
    StatusNotifierTray other;
    other.start(false);
    startTrayer();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    other.setHasHost(true);
    EXPECT_TRUE(eventually([&] { return !other.items().isEmpty() && placeOf(pillColor).isNull(); }));
    other.setHasHost(false);
    EXPECT_TRUE(eventually([&] { return other.items().isEmpty() && !placeOf(pillColor).isNull(); }));
}

TEST_F(TrayOnTheDesktop, restingOnTheIconOfTheOlderTrayShowsTheToolTip) {
    item->setToolTip(QStringLiteral("Tavrine"));
    startTrayer();
    item->setVisible(true);
    ASSERT_TRUE(isShown());
    letPass(200ms);
    const QPoint place = placeOf(pillColor).center();
    static_cast<void>(outputOf(QStringLiteral("xdotool"),
                               {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())}));
    EXPECT_TRUE(eventually([&] { return toolTips.contains(QStringLiteral("Tavrine")); }));
}

} // namespace
} // namespace tavrine::test

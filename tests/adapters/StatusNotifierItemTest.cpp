// What hosts see of the item on the bus.

#include "adapters/linux/StatusNotifierItem.h"

#include "adapters/linux/StatusPixels.h"
#include "adapters/linux/TrayStatusItem.h"
#include "shell/StatusIcon.h"
#include "support/Eventually.h"
#include "support/Program.h"
#include "support/ProgramName.h"
#include "support/StatusNotifierTray.h"
#include "utilities/meter/SpeedImage.h"

#include <QCursor>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

/// A portal that knows one setting.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit Portal(uint scheme) : m_scheme(scheme) {
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
        m_bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                             QDBusConnection::ExportScriptableContents);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("test-portal")); }
    void change(uint scheme) {
        m_scheme = scheme;
        Q_EMIT SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                              QDBusVariant(scheme));
    }

public Q_SLOTS:
    Q_SCRIPTABLE QMap<QString, QVariantMap> ReadAll(const QStringList &) {
        return {{QStringLiteral("org.freedesktop.appearance"), {{QStringLiteral("color-scheme"), m_scheme}}}};
    }

Q_SIGNALS:
    Q_SCRIPTABLE void SettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-portal"));
    uint m_scheme;
};

/// The names of hosts on the bus.
QStringList hosts() {
    return outputOf(QStringLiteral("gdbus"),
                    {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                     QStringLiteral("org.freedesktop.DBus"), QStringLiteral("--object-path"), QStringLiteral("/"),
                     QStringLiteral("--method"), QStringLiteral("org.freedesktop.DBus.ListNames")})
        .split(u'\'')
        .filter(QStringLiteral("StatusNotifierHost"));
}

class StatusNotifierItemTest : public testing::Test {
public:
    StatusNotifierItemTest() {
        std::vector<std::unique_ptr<TrayIcon>> trays;
        trays.push_back(std::make_unique<StatusNotifierItem>());
        item = std::make_unique<TrayStatusItem>(std::move(trays));
        item->setImage(statusIcon(false, false, {}));
        item->setToolTip(QStringLiteral("Tavrine"));
        item->setOnPress([this](QPoint place, Seconds) { presses.append(place); });
        tray.start();
        item->setVisible(true);
    }
    bool isShown() {
        return eventually([&] { return !tray.properties().isEmpty(); });
    }
    QString property(const char *called) { return tray.properties().value(QLatin1String(called)).toString(); }
    QColor symbolColor() {
        const QImage image = tray.pixmaps().value(1).toImage();
        return image.isNull() ? QColor() : image.pixelColor(8, 24); // on the board, left of the letter
    }
    StatusNotifierTray tray;
    std::unique_ptr<TrayStatusItem> item;
    QList<QPoint> presses;
};

TEST_F(StatusNotifierItemTest, tellsWhatItIs) {
    ASSERT_TRUE(isShown());
    EXPECT_EQ(property("Id"), QStringLiteral("com.veltrane.Tavrine"));
    EXPECT_EQ(property("Title"), QStringLiteral("Tavrine"));
    EXPECT_EQ(property("Category"), QStringLiteral("ApplicationStatus"));
    EXPECT_EQ(property("Status"), QStringLiteral("Active"));
    EXPECT_EQ(tray.properties().value(QStringLiteral("ItemIsMenu")), QVariant(false));
    EXPECT_EQ(property("IconName"), QString());
    EXPECT_EQ(tray.toolTip().title, QStringLiteral("Tavrine"));
    EXPECT_EQ(tray.properties().value(QStringLiteral("Menu")).value<QDBusObjectPath>().path(),
              QStringLiteral("/NO_DBUSMENU"));
    EXPECT_TRUE(tray.items().constFirst().startsWith(QStringLiteral("org.kde.StatusNotifierItem-")));
}

TEST_F(StatusNotifierItemTest, sendsThePictureInSingleAndDoubleSize) {
    ASSERT_TRUE(isShown());
    ASSERT_EQ(tray.pixmaps().size(), 2);
    EXPECT_EQ(tray.pixmaps()[0].toImage().size(), QSize(18, 18));
    EXPECT_EQ(tray.pixmaps()[1].toImage().size(), QSize(36, 36));
}

TEST_F(StatusNotifierItemTest, colorsSurviveTheWay) {
    item->setImage(statusIcon(true, true, QStringLiteral("#12AB56")));
    ASSERT_TRUE(isShown());
    ASSERT_TRUE(eventually([&] { return tray.pixmaps().value(0).toImage().size() == QSize(28, 28); }))
        << "sway's bar takes nothing but squares";
    EXPECT_EQ(tray.pixmaps()[1].toImage().pixelColor(4, 28), QColor(0x12, 0xAB, 0x56));
    EXPECT_EQ(tray.pixmaps()[1].toImage().pixelColor(28, 4).alpha(), 0);
    EXPECT_EQ(tray.pixmaps()[1].toImage().pixelColor(0, 0).alpha(), 0);
}

TEST_F(StatusNotifierItemTest, aChangeIsToldOnceAndOnlyWhenThereIsOne) {
    ASSERT_TRUE(isShown());
    item->setImage(statusIcon(false, false, {}));
    item->setToolTip(QStringLiteral("Tavrine"));
    letPass(200ms);
    EXPECT_TRUE(tray.signalsSeen().isEmpty()) << qPrintable(tray.signalsSeen().join(u','));
    item->setImage(statusIcon(true, true, {}));
    item->setToolTip(QStringLiteral("Tavrine — Keep Awake: Lid Closed"));
    ASSERT_TRUE(eventually([&] { return tray.signalsSeen().size() >= 2; }));
    letPass(100ms);
    EXPECT_EQ(tray.signalsSeen(), QStringList({QStringLiteral("NewIcon"), QStringLiteral("NewToolTip")}));
}

TEST_F(StatusNotifierItemTest, theSpeedMeterIsASquareHereThatFollowsTheAppearanceOfTheDesktop) {
    item->setImage(speedImage({.download = QStringLiteral("12.3MB"), .upload = QStringLiteral("   0 B")}));
    ASSERT_TRUE(isShown());
    const auto isInked = [this](const QColor &color) {
        const QImage image = tray.pixmaps().value(1).toImage();
        if (image.size() != QSize(44, 44))
            return false;
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                pixels += image.pixelColor(x, y) == color ? 1 : 0;
        return pixels > 50;
    };
    EXPECT_TRUE(eventually([&] { return isInked(lightSymbolColor); }));
    EXPECT_EQ(tray.pixmaps().value(0).toImage().size(), QSize(22, 22));
    Portal portal(2);
    EXPECT_TRUE(eventually([&] { return isInked(darkSymbolColor); }));
}

TEST_F(StatusNotifierItemTest, theSpeedMeterIsWideWhereAllWhoDrawTheTrayKeepItsShape) {
    const auto hasSize = [this](QSize size) {
        return eventually([&] {
            return tray.pixmaps().value(0).toImage().size() == size &&
                   tray.pixmaps().value(1).toImage().size() == 2 * size;
        });
    };
    item->setImage(speedImage({.download = QStringLiteral("12.3MB"), .upload = QStringLiteral("   0 B")}));
    ASSERT_TRUE(isShown());
    EXPECT_TRUE(hasSize({22, 22}));
    const ProgramName bar("waybar");
    tray.setHasHost(true);
    EXPECT_TRUE(hasSize({70, 16}));
    item->setImage(speedImage({.download = {}, .upload = {}, .isConnected = false}));
    EXPECT_TRUE(hasSize({92, 16}));
    {
        const Program other(QStringLiteral("/usr/bin/python3"),
                            {QStringLiteral("-c"),
                             QStringLiteral("import dbus, signal; bus = dbus.SessionBus(); "
                                            "bus.request_name('org.kde.StatusNotifierHost-1-1'); signal.pause()")});
        const auto isThere = [] { return hosts().contains(QStringLiteral("org.kde.StatusNotifierHost-1-1")); };
        ASSERT_TRUE(eventually(isThere));
        tray.setHasHost(true);
        EXPECT_TRUE(hasSize({22, 22})) << "another host may fit it into a square";
    }
    ASSERT_TRUE(eventually([] { return hosts().isEmpty(); }));
    tray.setHasHost(true);
    EXPECT_TRUE(hasSize({92, 16}));
}

TEST_F(StatusNotifierItemTest, whereAWideImageKeepsItsShapeIsToldAnew) {
    StatusNotifierItem alone;
    int told = 0;
    alone.setHandlers({.onOfferChanged = [&] { ++told; }, .onShown = {}, .onPress = {}, .onSecondaryPress = {}});
    ASSERT_TRUE(eventually([&] { return alone.offer() == TrayIcon::Offer::yes; }));
    EXPECT_FALSE(alone.keepsShape());
    const int before = told;
    const ProgramName bar("waybar");
    tray.setHasHost(true);
    EXPECT_TRUE(eventually([&] { return alone.keepsShape(); }));
    EXPECT_EQ(told, before + 1);
}

TEST_F(StatusNotifierItemTest, aHostThatGoesWhileItIsLookedAtOffersNothing) {
    item.reset();
    StatusNotifierItem alone;
    ASSERT_TRUE(eventually([&] { return alone.offer() == TrayIcon::Offer::yes; }));
    for (int times = 0; times < 10; ++times) { // the two answers race
        tray.comeAndGo();
        ASSERT_TRUE(eventually([&] { return !tray.hasHost(); })) << times;
        letPass(100ms);
        EXPECT_EQ(alone.offer(), TrayIcon::Offer::no) << times;
    }
}

TEST_F(StatusNotifierItemTest, eachFirstWayOfPressingAsksForTheMenu) {
    ASSERT_TRUE(isShown());
    for (const QString &method : {QStringLiteral("Activate"), QStringLiteral("ContextMenu")})
        tray.call(method, {30, 4});
    ASSERT_TRUE(eventually([&] { return presses.size() == 2; }));
    EXPECT_EQ(presses, QList<QPoint>(2, QPoint(30, 4)));
}

TEST_F(StatusNotifierItemTest, theSecondWayOfPressingIsToldApartAndTheWheelDoesNothing) {
    QList<QPoint> secondaryPresses;
    item->setOnSecondaryPress([&](QPoint place, Seconds) { secondaryPresses.append(place); });
    ASSERT_TRUE(isShown());
    for (int notch = 0; notch < 5; ++notch)
        tray.scroll(notch % 2 ? 120 : -120);
    tray.call(QStringLiteral("SecondaryActivate"), {30, 4});
    ASSERT_TRUE(eventually([&] { return !secondaryPresses.isEmpty(); }));
    EXPECT_EQ(secondaryPresses, QList<QPoint>{QPoint(30, 4)});
    EXPECT_TRUE(presses.isEmpty());
}

TEST_F(StatusNotifierItemTest, aHostThatKnowsNoPlaceMeansThePointer) {
    ASSERT_TRUE(isShown());
    QCursor::setPos(123, 45);
    tray.call(QStringLiteral("Activate"), {0, 0});
    ASSERT_TRUE(eventually([&] { return !presses.isEmpty(); }));
    EXPECT_EQ(presses.constFirst(), QPoint(123, 45));
}

TEST_F(StatusNotifierItemTest, hidingAndShowingInOneTurnEndsShown) {
    ASSERT_TRUE(isShown());
    for (int i = 0; i < 5; ++i) {
        item->setVisible(false);
        item->setVisible(true);
    }
    letPass(200ms);
    EXPECT_EQ(tray.items().size(), 1);
    item->setVisible(true);
    item->setVisible(false);
    EXPECT_TRUE(eventually([&] { return tray.items().isEmpty(); }));
}

TEST_F(StatusNotifierItemTest, theSymbolIsLightWhereNobodySaysAnything) {
    ASSERT_TRUE(isShown());
    EXPECT_EQ(symbolColor(), lightSymbolColor);
}

TEST_F(StatusNotifierItemTest, theSymbolFollowsTheAppearanceOfTheDesktop) {
    ASSERT_TRUE(isShown());
    Portal portal(2); // one that starts later
    EXPECT_TRUE(eventually([&] { return symbolColor() == darkSymbolColor; }));
    portal.change(1);
    EXPECT_TRUE(eventually([&] { return symbolColor() == lightSymbolColor; }));
}

} // namespace
} // namespace tavrine::test

#include "StatusNotifierItemTest.moc"

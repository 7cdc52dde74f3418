#include "shell/menu/QuickActionsLayout.h"

#include "adapters/fake/VirtualTime.h"
#include "base/UserDefaults.h"
#include "shell/menu/LayoutPreferences.h"
#include "shell/settings/LayoutSettingsModel.h"

#include <QTemporaryDir>

#include <set>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using enum QuickAction;

LayoutRow card(QuickAction action) {
    return {true, {action}};
}
LayoutRow tiles(QuickAction first) {
    return {false, {first}};
}
LayoutRow tiles(QuickAction first, QuickAction second) {
    return {false, {first, second}};
}

std::vector<LayoutRow> rowsOf(const QString &order, const std::set<QuickAction> &hidden = {}) {
    return layoutRows(orderedIds(order), [&hidden](QuickAction action) { return !hidden.contains(action); });
}
const QString menuOrder = preference::layoutOrder.fallbackValue();

TEST(QuickActionsLayout, eachPlaceHasItsOwnWordsAndSymbol) {
    QStringList places;
    for (const QuickActionText &each : quickActionTexts)
        places.append(QStringLiteral("%1 %2 %3, %4, %5, %6")
                          .arg(QLatin1String(each.id), QLatin1String(each.isCard ? "card" : "tile"),
                               QLatin1String(each.icon), QLatin1String(each.title), QLatin1String(each.subtitle),
                               QLatin1String(each.subtitleOn)));
    EXPECT_THAT(places, testing::ElementsAre(
                            QStringLiteral("loFi card headphones, Lo-Fi Vibe, , "),
                            QStringLiteral("keepAwake card cup.and.saucer.fill, Keep Awake, , "),
                            QStringLiteral("screenshot tile camera.viewfinder, Screenshot, Capture & edit, "),
                            QStringLiteral("screenRecord tile video.badge.plus, Record Screen, Capture screen area, "),
                            QStringLiteral("qrScan tile qrcode.viewfinder, QR Scan, Scan from screen, "),
                            QStringLiteral("cleanMode tile keyboard.fill, Clean Mode, Active, Input Blocked"),
                            QStringLiteral("settings tile gearshape.fill, Open Settings, Configure, "),
                            QStringLiteral("editor tile photo.badge.plus, Tavrine Editor, Edit photos & snips, ")));
}

TEST(QuickActionsLayout, withAllTilesOnAndNoStoredOrderTheRowsAreTheMenusOwn) {
    EXPECT_THAT(rowsOf(menuOrder), testing::ElementsAre(card(loFi), card(keepAwake), tiles(screenshot, screenRecord),
                                                        tiles(qrScan, cleanMode), tiles(settings, editor)));
}

TEST(QuickActionsLayout, threeStoredIdsGetTheRecorderAndTheEditorAtTheEnd) {
    EXPECT_THAT(rowsOf(QStringLiteral("cleanMode,loFi,settings")),
                testing::ElementsAre(tiles(cleanMode), card(loFi), tiles(settings, screenRecord), tiles(editor)));
}

TEST(QuickActionsLayout, withTheScreenshotHiddenTheRecorderPairsWithTheScanAndAllBehindItShifts) {
    EXPECT_THAT(rowsOf(menuOrder, {screenshot}),
                testing::ElementsAre(card(loFi), card(keepAwake), tiles(screenRecord, qrScan),
                                     tiles(cleanMode, settings), tiles(editor)));
}

TEST(QuickActionsLayout, theRecorderGoesBehindTheFirstScreenshot) {
    EXPECT_EQ(orderedIds(QStringLiteral("qrScan,screenshot,editor,screenshot")),
              QStringLiteral("qrScan,screenshot,screenRecord,editor,screenshot").split(u','));
}

TEST(QuickActionsLayout, aStoredRecorderAndEditorStayWhereTheyAre) {
    const QString order = QStringLiteral("editor,screenRecord,screenshot");
    EXPECT_EQ(orderedIds(order), order.split(u','));
}

TEST(QuickActionsLayout, anEmptyOrderGivesTheRecorderAndTheEditor) {
    EXPECT_THAT(rowsOf({}), testing::ElementsAre(tiles(screenRecord, editor)));
}

TEST(QuickActionsLayout, unknownAndEmptyIdsArePassedOver) {
    EXPECT_THAT(rowsOf(QStringLiteral(",,teapot,qrScan,,LOFI,editor, cleanMode")),
                testing::ElementsAre(tiles(qrScan, editor), tiles(screenRecord)));
}

TEST(QuickActionsLayout, aCardBreaksAPair) {
    EXPECT_THAT(rowsOf(QStringLiteral("qrScan,keepAwake,cleanMode,screenRecord,editor")),
                testing::ElementsAre(tiles(qrScan), card(keepAwake), tiles(cleanMode, screenRecord), tiles(editor)));
}

TEST(QuickActionsLayout, tenThousandIdsAreReadInNoTime) {
    QString order;
    for (int i = 0; i < 10'000; ++i)
        order += i % 2 ? QStringLiteral("qrScan,") : QStringLiteral("nothing,");
    EXPECT_EQ(rowsOf(order).size(), 2501U); // five thousand of them in pairs, and what was missing
}

class LayoutPage : public testing::Test {
protected:
    LayoutSettingsModel page() { return {flags, defaults, center}; }
    QString stored() const { return defaults.get<QString>(QStringLiteral("layoutOrder"), QString()); }
    void store(const char *order) { defaults.set(QStringLiteral("layoutOrder"), QString::fromLatin1(order)); }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("p.plist")), time, center};
    FeatureFlags flags{defaults};
};

TEST_F(LayoutPage, afterItWasOpenedOnceTheLastRowIsTheEditorWithTheSettings) {
    EXPECT_EQ(rowsOf(preference::layoutOrder.get(defaults)).back(), tiles(settings, editor));
    static_cast<void>(page().items());
    EXPECT_EQ(stored(), QStringLiteral("loFi,keepAwake,screenshot,qrScan,cleanMode,editor,settings"));
    EXPECT_EQ(rowsOf(preference::layoutOrder.get(defaults)).back(), tiles(editor, settings));
}

TEST_F(LayoutPage, theRecorderLosesItsPlaceInTheStoredOrderAndTheMenuGivesItBack) {
    store("screenRecord,screenshot,loFi");
    static_cast<void>(page().items());
    EXPECT_EQ(stored(), QStringLiteral("screenshot,loFi,keepAwake,qrScan,cleanMode,settings,editor"));
    EXPECT_EQ(rowsOf(stored()).front(), tiles(screenshot, screenRecord));
}

TEST_F(LayoutPage, missingIdsAreAppendedAndUnknownOnesAndDoublesGo) {
    store("editor,,teapot,editor,qrScan");
    EXPECT_THAT(page().items(), testing::ElementsAre(editor, qrScan, loFi, keepAwake, screenshot, cleanMode, settings));
}

TEST_F(LayoutPage, aPlaceThatIsDraggedDownGoesBehindTheOneThatItCameOver) {
    store("loFi,keepAwake,screenshot,qrScan,cleanMode,settings,editor");
    LayoutSettingsModel model = page();
    model.beginDrag(loFi);
    model.dropEntered(screenshot);
    EXPECT_THAT(model.items(), testing::ElementsAre(keepAwake, screenshot, loFi, qrScan, cleanMode, settings, editor));
    EXPECT_EQ(stored(), QStringLiteral("keepAwake,screenshot,loFi,qrScan,cleanMode,settings,editor"));
}

TEST_F(LayoutPage, aPlaceThatIsDraggedUpGoesBeforeIt) {
    store("loFi,keepAwake,screenshot,qrScan,cleanMode,settings,editor");
    LayoutSettingsModel model = page();
    model.beginDrag(editor);
    model.dropEntered(keepAwake);
    EXPECT_THAT(model.items(), testing::ElementsAre(loFi, editor, keepAwake, screenshot, qrScan, cleanMode, settings));
}

TEST_F(LayoutPage, withoutADragNothingMoves) {
    LayoutSettingsModel model = page();
    const auto before = model.items();
    model.dropEntered(keepAwake);
    model.beginDrag(loFi);
    model.dropEntered(loFi);
    model.dropEntered(screenRecord); // is not on the page
    model.performDrop();
    model.dropEntered(keepAwake);
    EXPECT_EQ(model.items(), before);
}

TEST_F(LayoutPage, theArrowKeysMoveAPlaceOverWhatIsShown) {
    store("loFi,keepAwake,screenshot,qrScan,cleanMode,settings,editor");
    flags.set(Feature::keepAwake, false);
    LayoutSettingsModel model = page();
    EXPECT_TRUE(model.moveBy(loFi, 1));
    EXPECT_THAT(model.items(), testing::ElementsAre(keepAwake, screenshot, loFi, qrScan, cleanMode, settings, editor));
    EXPECT_FALSE(model.moveBy(screenshot, -1)) << "it is the first that is shown";
    EXPECT_FALSE(model.moveBy(editor, 1));
    EXPECT_FALSE(model.dragging().has_value());
}

TEST_F(LayoutPage, twoSwitchesAreTheToolsOwn) {
    LayoutSettingsModel model = page();
    model.setShown(keepAwake, false);
    EXPECT_FALSE(flags.isOn(Feature::keepAwake));
    flags.set(Feature::loFi, false);
    EXPECT_FALSE(model.isShown(loFi));
}

TEST_F(LayoutPage, theOtherSwitchesArePreferencesOfTheMenu) {
    LayoutSettingsModel model = page();
    for (const auto &[action, key] :
         {std::pair{screenshot, "layoutShowScreenshot"}, {editor, "layoutShowEditor"}, {qrScan, "layoutShowQRScan"}}) {
        model.setShown(action, false);
        EXPECT_EQ(defaults.get<bool>(QLatin1String(key)), false);
        EXPECT_FALSE(model.isShown(action));
    }
    EXPECT_TRUE(flags.isOn(Feature::snippingTool));
}

TEST_F(LayoutPage, theScreenshotsSwitchIsDisabledWhileItsToolIsOff) {
    LayoutSettingsModel model = page();
    EXPECT_TRUE(model.isSwitchEnabled(screenshot));
    flags.set(Feature::snippingTool, false);
    EXPECT_FALSE(model.isSwitchEnabled(screenshot));
    EXPECT_TRUE(model.isSwitchEnabled(editor));
    EXPECT_FALSE(LayoutSettingsModel::canHide(settings));
}

TEST_F(LayoutPage, withEverythingHiddenOnlyTheSettingsStay) {
    LayoutSettingsModel model = page();
    for (const QuickAction action : model.items())
        if (LayoutSettingsModel::canHide(action))
            model.setShown(action, false);
    EXPECT_THAT(model.rows(), testing::ElementsAre(tiles(settings)));
}

} // namespace
} // namespace tavrine

#include "shell/FeatureFlags.h"

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

class FeatureFlagsTest : public testing::Test {
protected:
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{home.filePath(QStringLiteral("p.plist")), time, center};
};

TEST_F(FeatureFlagsTest, aFreshInstallHasEverythingOnAndStoresNothing) {
    const FeatureFlags flags(defaults);
    for (const FeatureText &each : featureTexts) {
        EXPECT_TRUE(flags.isOn(each.feature)) << each.property;
        EXPECT_FALSE(defaults.contains(QLatin1String(each.preference.key))) << each.preference.key;
    }
}

TEST_F(FeatureFlagsTest, eachFeatureHasItsOwnPreferenceAndSymbol) {
    QStringList features;
    for (const FeatureText &each : featureTexts)
        features.append(QLatin1String(each.preference.key) + QLatin1Char(' ') + QLatin1String(each.icon));
    EXPECT_EQ(features, QStringList({QStringLiteral("featureNotchShelf menubar.arrow.up.rectangle"),
                                     QStringLiteral("featureSnippingTool viewfinder.circle.fill"),
                                     QStringLiteral("featureScreenRecorder video.badge.plus"),
                                     QStringLiteral("featureTavrineEditor photo.badge.plus"),
                                     QStringLiteral("featureClipboardHistory doc.on.clipboard"),
                                     QStringLiteral("featureNetworkSpeed network"),
                                     QStringLiteral("featureKeepAwake cup.and.saucer.fill"),
                                     QStringLiteral("featureCleaningMode keyboard.fill"),
                                     QStringLiteral("featureLoFi headphones"),
                                     QStringLiteral("featureEmojiPicker face.smiling")}));
}

TEST_F(FeatureFlagsTest, onlyAStoredBoolCounts) {
    defaults.set(QStringLiteral("featureKeepAwake"), false);
    defaults.set(QStringLiteral("featureCleaningMode"), true);
    defaults.set(QStringLiteral("featureEmojiPicker"), 0);
    defaults.set(QStringLiteral("featureNetworkSpeed"), 0.0);
    const FeatureFlags flags(defaults);
    EXPECT_FALSE(flags.isOn(Feature::keepAwake));
    EXPECT_TRUE(flags.isOn(Feature::cleaningMode));
    EXPECT_TRUE(flags.isOn(Feature::emojiPicker));
    EXPECT_TRUE(flags.isOn(Feature::networkSpeed));
}

TEST_F(FeatureFlagsTest, aStringUnderFeatureLoFiIsTreatedAsTrue) {
    defaults.set(QStringLiteral("featureLoFi"), QStringLiteral("false"));
    EXPECT_TRUE(FeatureFlags(defaults).isOn(Feature::loFi));
}

TEST_F(FeatureFlagsTest, theSetterTellsPublishesAndThenStores) {
    FeatureFlags flags(defaults);
    QStringList order;
    QObject::connect(&flags, &FeatureFlags::objectWillChange, [&] {
        order += QStringLiteral("will");
        EXPECT_TRUE(flags.isOn(Feature::loFi));
    });
    QObject::connect(&flags, &FeatureFlags::published, [&](Feature feature, bool isOn) {
        order += QStringLiteral("published");
        EXPECT_EQ(feature, Feature::loFi);
        EXPECT_FALSE(isOn);
        EXPECT_FALSE(flags.isOn(Feature::loFi));
        EXPECT_FALSE(defaults.contains(QStringLiteral("featureLoFi")));
    });
    flags.set(Feature::loFi, false);
    EXPECT_EQ(order, (QStringList{QStringLiteral("will"), QStringLiteral("published")}));
    EXPECT_EQ(defaults.get<bool>(QStringLiteral("featureLoFi")), false);
}

TEST_F(FeatureFlagsTest, eachFlagHasItsOwnKey) {
    FeatureFlags flags(defaults);
    for (const FeatureText &each : featureTexts) {
        flags.set(each.feature, false);
        EXPECT_EQ(defaults.get<bool>(QLatin1String(each.preference.key)), false) << each.preference.key;
        const FeatureFlags again(defaults);
        for (const FeatureText &other : featureTexts)
            EXPECT_EQ(again.isOn(other.feature), other.feature != each.feature) << other.property;
        flags.set(each.feature, true);
    }
}

TEST_F(FeatureFlagsTest, theKeysAreThePropertiesAfterTheWordFeature) {
    for (const FeatureText &each : featureTexts) {
        QString property = QLatin1String(each.property);
        property[0] = property[0].toUpper();
        EXPECT_EQ(QLatin1String(each.preference.key), QStringLiteral("feature") + property);
    }
}

} // namespace
} // namespace tavrine

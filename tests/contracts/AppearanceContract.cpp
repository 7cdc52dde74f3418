#include "adapters/fake/FakeAppearance.h"
#include "adapters/linux/DesktopLooks.h"
#include "adapters/linux/GtkSettingsFiles.h"
#include "adapters/linux/PlasmaSettingsFile.h"
#include "adapters/linux/PortalAppearance.h"
#include "support/SettingsPortal.h"
#include "support/Wait.h"

#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>

#include <cmath>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

const auto gnomeGroup = QStringLiteral("org.gnome.desktop.interface");
const auto plasmaGroup = QStringLiteral("org.kde.kdeglobals.KDE");
const auto appearanceGroup = QStringLiteral("org.freedesktop.appearance");

struct Rgb {
    double red = 0;
    double green = 0;
    double blue = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Rgb &rgb) {
    argument.beginStructure();
    argument << rgb.red << rgb.green << rgb.blue;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Rgb &rgb) {
    argument.beginStructure();
    argument >> rgb.red >> rgb.green >> rgb.blue;
    argument.endStructure();
    return argument;
}

class DesktopAppearanceTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { qDBusRegisterMetaType<Rgb>(); }

    test::SettingsPortal portal;
};

TEST_F(DesktopAppearanceTest, leavesEverythingUnsaidWithoutAPortal) {
    PortalAppearance appearance(QDBusConnection::sessionBus());
    EXPECT_EQ(appearance.settings(), DesktopAppearance{});
}

TEST_F(DesktopAppearanceTest, readsAPortalThatRuns) {
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 1U);
    portal.set(appearanceGroup, QStringLiteral("accent-color"), QVariant::fromValue(Rgb{1, 0.5, 0}));
    ASSERT_TRUE(portal.appear());
    PortalAppearance appearance(QDBusConnection::sessionBus());
    int changes = 0;
    appearance.setOnChange([&] { ++changes; });
    ASSERT_TRUE(testing::waitUntil([&] { return changes > 0; }));
    EXPECT_EQ(appearance.settings().colorScheme, ColorScheme::dark);
    ASSERT_TRUE(appearance.settings().accent.has_value());
    EXPECT_EQ(appearance.settings().accent->rgb(), qRgb(255, 128, 0));
    EXPECT_EQ(changes, 1);
}

TEST_F(DesktopAppearanceTest, hearsAPortalThatStartsLaterAndOneThatGoes) {
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 2U, false);
    PortalAppearance appearance(QDBusConnection::sessionBus());
    ASSERT_TRUE(portal.appear());
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::light; }));
    portal.leave();
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings() == DesktopAppearance{}; }));
}

TEST_F(DesktopAppearanceTest, followsChangesAndTellsEachOnce) {
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 1U);
    ASSERT_TRUE(portal.appear());
    PortalAppearance appearance(QDBusConnection::sessionBus());
    int changes = 0;
    appearance.setOnChange([&] { ++changes; });
    ASSERT_TRUE(testing::waitUntil([&] { return changes == 1; }));
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 1U); // the same again
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 2U);
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::light; }));
    EXPECT_EQ(changes, 2);
    portal.set(gnomeGroup, QStringLiteral("enable-animations"), false);
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().reducesMotion; }));
    EXPECT_EQ(changes, 3);
}

TEST_F(DesktopAppearanceTest, eachWishForLessMotionCountsByItself) {
    const auto follows = [](const PortalAppearance &appearance, bool reduces) {
        return testing::waitUntil([&] { return appearance.settings().reducesMotion == reduces; });
    };
    // Told at first, beside others that ask for nothing, in whichever order they stand.
    portal.set(appearanceGroup, QStringLiteral("reduced-motion"), 0U);
    portal.set(gnomeGroup, QStringLiteral("enable-animations"), false);
    portal.set(plasmaGroup, QStringLiteral("AnimationDurationFactor"), QStringLiteral("1"));
    ASSERT_TRUE(portal.appear());
    PortalAppearance appearance(QDBusConnection::sessionBus());
    ASSERT_TRUE(follows(appearance, true));
    portal.set(appearanceGroup, QStringLiteral("reduced-motion"), 1U);
    portal.set(gnomeGroup, QStringLiteral("enable-animations"), true);
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 1U); // what was told before has arrived with this
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::dark; }));
    EXPECT_TRUE(appearance.settings().reducesMotion);
    portal.set(appearanceGroup, QStringLiteral("reduced-motion"), 0U);
    ASSERT_TRUE(follows(appearance, false));
    for (const QVariant &none : {QVariant(QStringLiteral("0")), QVariant(0.0), QVariant(QStringLiteral("0.0"))}) {
        portal.set(plasmaGroup, QStringLiteral("AnimationDurationFactor"), none);
        EXPECT_TRUE(follows(appearance, true));
        portal.set(plasmaGroup, QStringLiteral("AnimationDurationFactor"), QStringLiteral("0.25"));
        EXPECT_TRUE(follows(appearance, false));
    }
}

TEST_F(DesktopAppearanceTest, takesNoColourFromNonsense) {
    ASSERT_TRUE(portal.appear());
    PortalAppearance appearance(QDBusConnection::sessionBus());
    const auto accent = QStringLiteral("accent-color");
    portal.set(appearanceGroup, accent, QVariant::fromValue(Rgb{0, 1, 0}));
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().accent.has_value(); }));
    for (const QVariant &nonsense :
         {QVariant::fromValue(Rgb{-1, 0, 0}), QVariant::fromValue(Rgb{0, 1.01, 0}),
          QVariant::fromValue(Rgb{0, 0, std::nan("")}), QVariant(QStringLiteral("red")), QVariant(7U)}) {
        portal.set(appearanceGroup, accent, QVariant::fromValue(Rgb{0, 1, 0}));
        ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().accent.has_value(); }));
        portal.set(appearanceGroup, accent, nonsense);
        EXPECT_TRUE(testing::waitUntil([&] { return !appearance.settings().accent.has_value(); }));
    }
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 2U);
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::light; }));
    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 3U);
    EXPECT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::noPreference; }));
}

/// Settings files of a person.
class SettingsFiles {
public:
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    void write(const char *version, const QByteArray &lines) const {
        QDir().mkpath(folder() + u'/' + QLatin1String(version));
        QSaveFile file(folder() + u'/' + QLatin1String(version) + QStringLiteral("/settings.ini"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Settings]\n" + lines);
        EXPECT_TRUE(file.commit());
    }

private:
    QTemporaryDir m_folder;
};

TEST(GtkSettingsFilesTest, askForDarkByTheWishOrByTheTheme) {
    SettingsFiles files;
    const auto scheme = [&] { return GtkSettingsFiles(files.folder()).settings().colorScheme; };
    EXPECT_EQ(scheme(), ColorScheme::noPreference);
    files.write("gtk-3.0", "gtk-application-prefer-dark-theme=1\n");
    EXPECT_EQ(scheme(), ColorScheme::dark);
    files.write("gtk-3.0", "gtk-application-prefer-dark-theme = true\n");
    EXPECT_EQ(scheme(), ColorScheme::dark);
    files.write("gtk-3.0", "gtk-application-prefer-dark-theme=0\ngtk-theme-name=Adwaita-dark\n");
    EXPECT_EQ(scheme(), ColorScheme::dark);
    files.write("gtk-3.0", "gtk-theme-name=Adwaita\n");
    EXPECT_EQ(scheme(), ColorScheme::noPreference);
    files.write("gtk-3.0", "[Other]\ngtk-application-prefer-dark-theme=1\n");
    EXPECT_EQ(scheme(), ColorScheme::noPreference);
}

TEST(GtkSettingsFilesTest, theNewerVersionsFileCountsFirst) {
    SettingsFiles files;
    files.write("gtk-3.0", "gtk-application-prefer-dark-theme=1\n");
    files.write("gtk-4.0", "gtk-application-prefer-dark-theme=0\n");
    EXPECT_EQ(GtkSettingsFiles(files.folder()).settings().colorScheme, ColorScheme::noPreference);
}

TEST(GtkSettingsFilesTest, nameTheThemesOfIconsAndSounds) {
    SettingsFiles files;
    EXPECT_EQ(gtkThemes(files.folder()).hasEventSounds, std::nullopt);
    files.write("gtk-3.0", "gtk-icon-theme-name=Papirus\ngtk-sound-theme-name=ocean\ngtk-enable-event-sounds=0\n");
    files.write("gtk-4.0", "gtk-icon-theme-name=Adwaita\n");
    const DesktopThemes themes = gtkThemes(files.folder());
    EXPECT_EQ(themes.icons, QStringLiteral("Adwaita"));
    EXPECT_EQ(themes.sounds, QStringLiteral("ocean"));
    EXPECT_EQ(themes.hasEventSounds, false);
}

TEST(GtkSettingsFilesTest, askForLessMotion) {
    SettingsFiles files;
    const auto reduces = [&] { return GtkSettingsFiles(files.folder()).settings().reducesMotion; };
    EXPECT_FALSE(reduces());
    files.write("gtk-3.0", "gtk-enable-animations=0\n");
    EXPECT_TRUE(reduces());
    files.write("gtk-3.0", "gtk-enable-animations=false\ngtk-theme-name=Adwaita-dark\n");
    EXPECT_TRUE(reduces());
    EXPECT_EQ(GtkSettingsFiles(files.folder()).settings().colorScheme, ColorScheme::dark);
    files.write("gtk-4.0", "gtk-enable-animations=1\n");
    EXPECT_FALSE(reduces());
}

TEST(PlasmaSettingsFileTest, asksForLessMotionByAFactorOfNothing) {
    const QTemporaryDir folder;
    const auto write = [&](const QByteArray &bytes) {
        QSaveFile file(folder.filePath(QStringLiteral("kdeglobals")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        ASSERT_TRUE(file.commit());
    };
    const auto reduces = [&] { return PlasmaSettingsFile(folder.path()).settings().reducesMotion; };
    EXPECT_FALSE(reduces());
    for (const char *still :
         {"[KDE]\nAnimationDurationFactor=0\n", "[General]\nx=1\n[KDE]\nAnimationDurationFactor = 0.0"}) {
        write(still);
        EXPECT_TRUE(reduces()) << still;
    }
    for (const char *moving :
         {"", "[KDE]\nAnimationDurationFactor=0.5\n", "[KDE]\nAnimationDurationFactor=\n",
          "[KDE]\nAnimationDurationFactor=nan\n", "[Other]\nAnimationDurationFactor=0\n", "[KDE]\nSingleClick=0\n"}) {
        write(moving);
        EXPECT_FALSE(reduces()) << moving;
    }

    PlasmaSettingsFile appearance(folder.path());
    int changes = 0;
    appearance.setOnChange([&] { ++changes; });
    write("[KDE]\nAnimationDurationFactor=0\n"); // each time another file in its place
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().reducesMotion; }));
    write("[KDE]\nAnimationDurationFactor=1\n");
    ASSERT_TRUE(testing::waitUntil([&] { return !appearance.settings().reducesMotion; }));
    EXPECT_EQ(changes, 2);
}

TEST(GtkSettingsFilesTest, aFileThatIsReplacedIsReadAnew) {
    SettingsFiles files;
    files.write("gtk-3.0", "gtk-theme-name=Adwaita\n");
    GtkSettingsFiles appearance(files.folder());
    int changes = 0;
    appearance.setOnChange([&] { ++changes; });
    files.write("gtk-3.0", "gtk-application-prefer-dark-theme=1\n");
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings().colorScheme == ColorScheme::dark; }));
    files.write("gtk-3.0", "gtk-theme-name=Adwaita\n");
    ASSERT_TRUE(testing::waitUntil([&] { return appearance.settings() == DesktopAppearance{}; }));
    EXPECT_EQ(changes, 2);
}

TEST_F(DesktopAppearanceTest, theToolkitsSettingsCountWhereNoPortalAnswers) {
    auto owned = std::make_unique<FakeAppearance>();
    FakeAppearance &toolkit = *owned;
    std::vector<std::unique_ptr<Appearance>> toolkits;
    toolkits.push_back(std::move(owned));
    DesktopLooks looks(std::move(toolkits));
    int changes = 0;
    looks.setOnChange([&] { ++changes; });
    toolkit.set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(looks.settings().colorScheme, ColorScheme::dark);
    EXPECT_EQ(changes, 1);

    portal.set(appearanceGroup, QStringLiteral("color-scheme"), 2U, false);
    ASSERT_TRUE(portal.appear());
    ASSERT_TRUE(testing::waitUntil([&] { return looks.settings().colorScheme == ColorScheme::light; }));
    toolkit.set({});
    EXPECT_EQ(changes, 2); // its word does not count now
    toolkit.set({.colorScheme = ColorScheme::dark});
    portal.leave();
    EXPECT_TRUE(testing::waitUntil([&] { return looks.settings().colorScheme == ColorScheme::dark; }));
    EXPECT_EQ(changes, 3);
}

TEST_F(DesktopAppearanceTest, whoeverAsksForLessMotionIsHeardAndKeepsNobodysColoursBack) {
    std::vector<FakeAppearance *> toolkits;
    std::vector<std::unique_ptr<Appearance>> owned;
    for (int i = 0; i < 2; ++i) {
        auto toolkit = std::make_unique<FakeAppearance>();
        toolkits.push_back(toolkit.get());
        owned.push_back(std::move(toolkit));
    }
    DesktopLooks looks(std::move(owned));
    toolkits[0]->set({.reducesMotion = true});
    toolkits[1]->set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(looks.settings(), (DesktopAppearance{.colorScheme = ColorScheme::dark, .reducesMotion = true}));

    portal.set(gnomeGroup, QStringLiteral("enable-animations"), true, false);
    ASSERT_TRUE(portal.appear());
    ASSERT_TRUE(testing::waitUntil([&] { return looks.settings().colorScheme == ColorScheme::noPreference; }));
    EXPECT_TRUE(looks.settings().reducesMotion);
    toolkits[0]->set({});
    EXPECT_FALSE(looks.settings().reducesMotion);
    portal.set(gnomeGroup, QStringLiteral("enable-animations"), false);
    EXPECT_TRUE(testing::waitUntil([&] { return looks.settings().reducesMotion; }));
}

TEST(FakeAppearance, tellsAChangeOnceAndAfterIt) {
    FakeAppearance appearance;
    std::vector<ColorScheme> seen;
    appearance.setOnChange([&] { seen.push_back(appearance.settings().colorScheme); });
    EXPECT_EQ(appearance.settings(), DesktopAppearance{});
    appearance.set({.colorScheme = ColorScheme::dark});
    appearance.set({.colorScheme = ColorScheme::dark});
    EXPECT_EQ(seen, std::vector{ColorScheme::dark});
}

} // namespace
} // namespace tavrine

Q_DECLARE_METATYPE(tavrine::Rgb)

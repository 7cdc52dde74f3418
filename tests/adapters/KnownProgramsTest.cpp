#include "adapters/linux/KnownPrograms.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QString idOf(const char *name) {
    const QString byId = knownProgram(QLatin1String(name), QString()).bundleIdentifier;
    EXPECT_EQ(knownProgram(QString(), QLatin1String(name)).bundleIdentifier, byId);
    return byId;
}

TEST(KnownPrograms, everyPasswordManagerOfTheListIsKnownByItsNamesOnThisDesktop) {
    for (const char *name : {"1Password", "1password"})
        EXPECT_TRUE(idOf(name).startsWith(QStringLiteral("com.agilebits.onepassword"))) << name;
    for (const char *name : {"Bitwarden", "bitwarden", "com.bitwarden.desktop"})
        EXPECT_EQ(idOf(name), QStringLiteral("com.bitwarden.desktop")) << name;
    for (const char *name : {"keepassxc", "KeePassXC", "org.keepassxc.KeePassXC"})
        EXPECT_EQ(idOf(name), QStringLiteral("org.keepassxc.keepassxc")) << name;
    for (const char *name : {"org.gnome.seahorse.Application", "seahorse", "Seahorse", "kwalletmanager5"})
        EXPECT_EQ(idOf(name), QStringLiteral("com.apple.keychainaccess")) << name;
    EXPECT_EQ(idOf("Dashlane"), QStringLiteral("co.dashlane.dashlane"));
    EXPECT_EQ(idOf("LastPass"), QStringLiteral("com.lastpass.LastPass"));
}

TEST(KnownPrograms, oneListedNameIsEnoughWhateverTheOtherSays) {
    const QString other = QStringLiteral("org.example.Written");
    const QString listed = QStringLiteral("KeePassXC");
    EXPECT_EQ(knownProgram(other, listed).bundleIdentifier, QStringLiteral("org.keepassxc.keepassxc"));
    EXPECT_EQ(knownProgram(other, listed).name, listed);
    EXPECT_EQ(knownProgram(listed, other).bundleIdentifier, QStringLiteral("org.keepassxc.keepassxc"));
    EXPECT_EQ(knownProgram(listed, other).name, listed);
}

TEST(KnownPrograms, ofTwoUnlistedNamesTheIdentifierIdentifiesAndTheClassIsTheName) {
    const KnownProgram program = knownProgram(QStringLiteral("org.example.Written"), QStringLiteral("Written"));
    EXPECT_EQ(program.bundleIdentifier, QStringLiteral("org.example.Written"));
    EXPECT_EQ(program.name, QStringLiteral("Written"));
}

TEST(KnownPrograms, anyOtherProgramKeepsItsName) {
    EXPECT_EQ(idOf("XTerm"), QStringLiteral("XTerm"));
    EXPECT_EQ(idOf("keepass"), QStringLiteral("keepass"));
    EXPECT_EQ(idOf(""), QString());
}

} // namespace
} // namespace tavrine

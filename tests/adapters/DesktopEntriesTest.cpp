#include "adapters/linux/DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

class DesktopFiles : public testing::Test {
protected:
    QString write(const char *name, const QByteArray &text) {
        const QString path = folder.filePath(QLatin1String(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }
    QTemporaryDir folder;
    DesktopEntries entries{{folder.filePath(QStringLiteral("missing")), folder.path()}};
};

TEST_F(DesktopFiles, aProgramIsCalledByItsClassAndElseByItsFile) {
    const QString classed =
        write("a.desktop", "[Desktop Entry]\nType=Application\nName=Alpha\nStartupWMClass=AlphaWin\n");
    EXPECT_EQ(entries.applicationIn(classed),
              (InstalledApplication{QStringLiteral("AlphaWin"), QStringLiteral("Alpha")}));
    const QString bare = write("org.gnome.Beta.desktop", "[Desktop Entry]\nName=Beta\nType=Application\n");
    EXPECT_EQ(entries.applicationIn(bare),
              (InstalledApplication{QStringLiteral("org.gnome.Beta"), QStringLiteral("Beta")}));
}

TEST_F(DesktopFiles, aListedPasswordManagerHasTheIdentifierThatItsWindowsHave) {
    const QString path = write("org.keepassxc.KeePassXC.desktop",
                               "[Desktop Entry]\nType=Application\nName=KeePassXC\nStartupWMClass=keepassxc\n");
    ASSERT_TRUE(entries.applicationIn(path));
    EXPECT_EQ(entries.applicationIn(path)->bundleIdentifier, QStringLiteral("org.keepassxc.keepassxc"));
}

TEST_F(DesktopFiles, whatTellsNoProgramIsNone) {
    for (const QByteArray &text :
         {QByteArray(), QByteArray("\xff\xfe\x00\x01", 4), QByteArray("Name=A\nType=Application\n"),
          QByteArray("[Desktop Entry]\nType=Link\nName=A\n"), QByteArray("[Desktop Entry]\nType=Application\n"),
          QByteArray("[Other]\nType=Application\nName=A\n"), QByteArray(600'000, 'x')})
        EXPECT_FALSE(entries.applicationIn(write("x.desktop", text))) << text.left(40).constData();
    EXPECT_FALSE(entries.applicationIn(folder.filePath(QStringLiteral("none.desktop"))));
    EXPECT_FALSE(entries.applicationIn(folder.path()));
}

TEST_F(DesktopFiles, keysOfOtherGroupsDoNotCount) {
    const QString path =
        write("c.desktop", "[Desktop Entry]\nType=Application\nName=Gamma\n\n[Desktop Action New]\nName=New\n");
    EXPECT_EQ(entries.applicationIn(path)->localizedName, QStringLiteral("Gamma"));
}

TEST_F(DesktopFiles, anIconIsFoundByWhateverTheProgramIsCalled) {
    QPixmap picture(40, 40);
    picture.fill(Qt::red);
    const QString icon = folder.filePath(QStringLiteral("icon.png"));
    ASSERT_TRUE(picture.save(icon));
    write("delta.desktop",
          "[Desktop Entry]\nType=Application\nName=Delta\nStartupWMClass=DeltaWin\nIcon=" + icon.toUtf8() + "\n");
    for (const char *name : {"delta", "DeltaWin", "deltawin"})
        EXPECT_EQ(entries.icon(QLatin1String(name), 20).size(), QSize(20, 20)) << name;
    EXPECT_TRUE(entries.icon(QStringLiteral("unknown"), 20).isNull());
}

TEST_F(DesktopFiles, theFolderIsTheFirstOneThatHoldsSomething) {
    EXPECT_EQ(entries.folder(), QString());
    write("a.desktop", "x");
    EXPECT_EQ(entries.folder(), folder.path());
}

} // namespace
} // namespace tavrine

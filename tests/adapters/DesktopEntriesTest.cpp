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

TEST_F(DesktopFiles, aProgramHasTheNamesThatTheFileCalledLikeItGives) {
    write("org.gnome.epsilon.desktop", "[Desktop Entry]\nType=Application\nName=E\nStartupWMClass=EpsilonWin\n"
                                       "Exec=/usr/bin/epsilon-2.1 %U\n");
    const QStringList names{QStringLiteral("EpsilonWin"), QStringLiteral("epsilon-2.1")};
    EXPECT_EQ(entries.otherNamesOf(QStringLiteral("org.gnome.epsilon")), names);
    EXPECT_EQ(entries.otherNamesOf(QStringLiteral("Org.Gnome.Epsilon")), names);
    EXPECT_EQ(entries.otherNamesOf(QStringLiteral("EpsilonWin")), QStringList());
    for (const QString &name : {QString(), QStringLiteral("../") + folder.path() + QStringLiteral("/org.gnome.epsilon"),
                                QStringLiteral("none")})
        EXPECT_EQ(entries.otherNamesOf(name), QStringList()) << qPrintable(name);
}

TEST_F(DesktopFiles, aFileOfThePersonsOwnGoesBeforeTheSystemsOfThatName) {
    const QTemporaryDir own;
    QFile file(own.filePath(QStringLiteral("zeta.desktop")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nType=Application\nName=Z\nStartupWMClass=Own\n");
    file.close();
    write("zeta.desktop", "[Desktop Entry]\nType=Application\nName=Z\nStartupWMClass=System\n");
    DesktopEntries both({own.path(), folder.path()});
    EXPECT_EQ(both.otherNamesOf(QStringLiteral("zeta")), QStringList{QStringLiteral("Own")});
}

struct Command {
    const char *file;
    const char *line;
    const char *name; ///< empty: the line gives none
};

class CommandOfAFile : public DesktopFiles, public testing::WithParamInterface<Command> {};

TEST_P(CommandOfAFile, isANameWhereItIsThatProgramsAlone) {
    const auto [file, line, name] = GetParam();
    write((QByteArray(file) + ".desktop").constData(),
          QByteArray("[Desktop Entry]\nType=Application\nName=N\nExec=") + line + "\n");
    EXPECT_EQ(entries.otherNamesOf(QLatin1String(file)).join(u','), QLatin1String(name));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CommandOfAFile,
    testing::Values(Command{"gimp", "gimp-2.10 %U", "gimp-2.10"},
                    Command{"quoted", "\"/opt/a/quoted-bin\" @@u %U @@", "quoted-bin"},
                    Command{"with-env", "env A=1 B=2 program", "program"},
                    Command{"org.kde.kate", "kate -b %U", "kate"}, Command{"office-writer", "office --writer %U", ""},
                    Command{"script", "python3 /usr/share/script.py", ""},
                    Command{"org.a.B", "/usr/bin/flatpak run --command=b-bin org.a.B @@u %U @@", "b-bin"},
                    Command{"org.a.C", "flatpak run org.a.C", ""}, Command{"none", "", ""},
                    Command{"env-alone", "env A=1", ""}));

TEST_F(DesktopFiles, theFolderIsTheFirstOneThatHoldsSomething) {
    EXPECT_EQ(entries.folder(), QString());
    write("a.desktop", "x");
    EXPECT_EQ(entries.folder(), folder.path());
}

} // namespace
} // namespace tavrine

#include "adapters/linux/XdgAutostart.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QByteArray valueOf(const char *key, const QByteArray &entry) {
    for (const QByteArray &line : entry.split('\n'))
        if (line.startsWith(QByteArray(key) + '='))
            return line.mid(qstrlen(key) + 1);
    return "absent";
}

class XdgAutostartTest : public testing::Test {
public:
    bool isEnabledWith(const QByteArray &text) {
        QDir().mkpath(folder);
        QFile entry(file);
        EXPECT_TRUE(entry.open(QIODevice::WriteOnly));
        entry.write(text);
        entry.close();
        return item.isEnabled();
    }
    QTemporaryDir home;
    QString folder = home.filePath(QStringLiteral("autostart"));
    QString file = folder + QStringLiteral("/com.veltrane.Tavrine.desktop");
    XdgAutostart item{folder, QStringLiteral("/usr/bin/tavrine")};
};

TEST_F(XdgAutostartTest, theEntryIsWrittenForThePersonAlone) {
    ASSERT_TRUE(item.registerItem());
    EXPECT_EQ(QFileInfo(file).permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup),
              QFile::Permissions());
    QFile entry(file);
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QByteArray text = entry.readAll();
    EXPECT_TRUE(text.startsWith("[Desktop Entry]\nType=Application\n"));
    EXPECT_EQ(valueOf("Name", text), "Tavrine");
    EXPECT_EQ(valueOf("Exec", text), "\"/usr/bin/tavrine\"");
    EXPECT_EQ(valueOf("TryExec", text), "/usr/bin/tavrine");
}

TEST_F(XdgAutostartTest, aPathWithSpacesAndSignsIsQuotedForTheLauncher) {
    const QByteArray entry = XdgAutostart::entryFor(QStringLiteral("/opt/a b/50%/\"q\"/$x/`y`/c\\d"));
    EXPECT_EQ(valueOf("Exec", entry), R"("/opt/a b/50%%/\\"q\\"/\\$x/\\`y\\`/c\\\\d")");
    EXPECT_EQ(valueOf("TryExec", entry), R"(/opt/a b/50%/"q"/$x/`y`/c\\d)");
}

TEST_F(XdgAutostartTest, anEntryCountsUnlessItIsHiddenOrSwitchedOff) {
    EXPECT_TRUE(isEnabledWith("[Desktop Entry]\nExec=x\n"));
    EXPECT_TRUE(isEnabledWith("[Desktop Entry]\nHidden=false\nX-GNOME-Autostart-enabled=true\n"));
    EXPECT_FALSE(isEnabledWith("[Desktop Entry]\nHidden = true\n"));
    EXPECT_FALSE(isEnabledWith("[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n"));
}

/// A program that has been moved, with an entry for the place where it was.
class MovedProgram : public XdgAutostartTest {
protected:
    QString programAt(const char *name) {
        const QString path = home.filePath(QLatin1String(name));
        QFile program(path);
        EXPECT_TRUE(program.open(QIODevice::WriteOnly));
        return path;
    }
    [[nodiscard]] QByteArray started() const {
        QFile entry(file);
        return entry.open(QIODevice::ReadOnly) ? valueOf("TryExec", entry.readAll()) : "no entry";
    }
    const QString here = programAt("here");
    const QString gone = home.filePath(QStringLiteral("gone"));
    XdgAutostart moved{folder, here};
};

TEST_F(MovedProgram, isStartedFromWhereItIsNow) {
    ASSERT_TRUE(XdgAutostart(folder, gone).registerItem());
    moved.followProgram();
    EXPECT_EQ(started(), here.toUtf8());
    EXPECT_TRUE(moved.isEnabled());
}

TEST_F(MovedProgram, leavesAnotherThatIsThereItsEntry) {
    const QString other = programAt("other");
    ASSERT_TRUE(XdgAutostart(folder, other).registerItem());
    moved.followProgram();
    EXPECT_EQ(started(), other.toUtf8());
}

TEST_F(MovedProgram, leavesWhatIsSwitchedOffAndWhatIsNoEntryOfOurs) {
    moved.followProgram();
    EXPECT_EQ(started(), "no entry");
    for (const QByteArray &text : {QByteArray("[Desktop Entry]\nHidden=true\nTryExec=" + gone.toUtf8() + "\n"),
                                   QByteArray("[Desktop Entry]\nExec=tavrine\nTryExec=tavrine\n"),
                                   QByteArray("[Desktop Entry]\nExec=tavrine\n")}) {
        (void)isEnabledWith(text);
        moved.followProgram();
        QFile entry(file);
        ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
        EXPECT_EQ(entry.readAll(), text);
    }
}

TEST_F(MovedProgram, thatIsNotThereItselfChangesNothing) {
    ASSERT_TRUE(XdgAutostart(folder, gone).registerItem());
    XdgAutostart(folder, home.filePath(QStringLiteral("gone too"))).followProgram();
    EXPECT_EQ(started(), gone.toUtf8());
}

TEST_F(XdgAutostartTest, whatOtherGroupsAndCommentsSayDoesNotCount) {
    EXPECT_TRUE(isEnabledWith("[Desktop Entry]\n#Hidden=true\n[Desktop Action a]\nHidden=true\n"));
}

TEST_F(XdgAutostartTest, anEntryThatCannotBeRemovedIsStillThereAndTheAnswerIsFalse) {
    ASSERT_TRUE(QDir().mkpath(file + QStringLiteral("/inside"))); // a folder in the place of the file
    EXPECT_FALSE(item.unregisterItem());
    EXPECT_FALSE(item.registerItem());
}

TEST_F(XdgAutostartTest, aLinkThatPointsNowhereIsNoEntryAndCanBeTakenAway) {
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QFile::link(home.filePath(QStringLiteral("nothing")), file));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.unregisterItem());
}

} // namespace
} // namespace tavrine

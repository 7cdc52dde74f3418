#include "adapters/linux/XdgFolders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace tavrine {
namespace {

class XdgFoldersTest : public ::testing::Test {
protected:
    XdgFoldersTest() {
        for (const char *name : names)
            before.append(qgetenv(name));
        for (const char *name : names)
            qunsetenv(name);
    }
    ~XdgFoldersTest() override {
        for (size_t i = 0; i < std::size(names); ++i)
            if (const QByteArray value = before.at(static_cast<qsizetype>(i)); value.isNull())
                qunsetenv(names[i]);
            else
                qputenv(names[i], value);
    }
    static constexpr const char *names[] = {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"};
    const QString account = QString::fromLocal8Bit(::getpwuid(::getuid())->pw_dir);
    QByteArrayList before;
};

TEST_F(XdgFoldersTest, withoutAHomeTheAccountsHomeCounts) {
    const Folders folders = xdgFolders();
    EXPECT_EQ(folders.home, account);
    EXPECT_EQ(folders.applicationSupport, account + QStringLiteral("/.local/share"));
    EXPECT_EQ(folders.temporary, account + QStringLiteral("/.cache/Tavrine/tmp"));
    EXPECT_EQ(folders.preferences, account + QStringLiteral("/.config"));
    EXPECT_EQ(qgetenv("HOME"), account.toLocal8Bit()); // for what is started
}

TEST_F(XdgFoldersTest, anEmptyHomeIsNone) {
    qputenv("HOME", "");
    EXPECT_EQ(xdgFolders().home, account);
}

TEST_F(XdgFoldersTest, aHomeThatIsSetStands) {
    qputenv("HOME", "/somewhere/else");
    EXPECT_EQ(xdgFolders().home, QStringLiteral("/somewhere/else"));
    EXPECT_EQ(xdgFolders().applicationSupport, QStringLiteral("/somewhere/else/.local/share"));
}

} // namespace
} // namespace tavrine

// What stands in the file's place, and what others do to it.
#include "UserDefaultsTest.h"

namespace tavrine {
namespace {

// What stands in the file's place, and what of it must be found unharmed.
struct Damage {
    const char *name;
    QByteArray content;
    friend void PrintTo(const Damage &damage, std::ostream *out) { *out << damage.name; }
};

class UnreadableDefaults : public UserDefaultsTest, public testing::WithParamInterface<Damage> {};

TEST_P(UnreadableDefaults, areSetAsideWithALineAndReplacedByTheDefaults) {
    writeFile(path, GetParam().content);
    testing::internal::CaptureStdout();
    open();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_FALSE(defaults->contains(key));
    const QString name = QStringLiteral("com.veltrane.Tavrine.plist.unreadable-20260131-120000");
    EXPECT_EQ(setAside(), QStringList{name});
    EXPECT_EQ(contentOf(QFileInfo(path).dir().filePath(name)), GetParam().content);
    EXPECT_THAT(output, HasSubstr(name.toStdString()));
    EXPECT_EQ(output.find('\n'), output.size() - 1);

    defaults->set(key, 3);
    reopen();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(setAside().size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Each, UnreadableDefaults,
    testing::Values(Damage{"empty", QByteArray("")}, Damage{"text", QByteArray("hello")},
                    Damage{"truncated", QByteArray("<plist version=\"1.0\"><dict><key>key</key><tr")},
                    Damage{"emptyOfPlist", QByteArray("<plist version=\"1.0\"></plist>")},
                    Damage{"aRootThatIsAnArray", QByteArray("<plist version=\"1.0\"><array/></plist>")},
                    Damage{"aRootThatIsAString", QByteArray("<plist version=\"1.0\"><string>x</string></plist>")},
                    Damage{"aKeyWithoutAValue", QByteArray("<plist><dict><key>key</key></dict></plist>")},
                    Damage{"binaryOfZeros", QByteArray("bplist00") + QByteArray(40, '\0')},
                    Damage{"binaryCutShort", QByteArray("bplist00\xd1")}),
    testing::PrintToStringParamName());

TEST_F(UserDefaultsTest, aFolderInTheFilesPlaceIsSetAside) {
    QDir().mkpath(path + QStringLiteral("/inside"));
    open();
    ASSERT_EQ(setAside().size(), 1);
    EXPECT_TRUE(QFileInfo(QFileInfo(path).dir().filePath(setAside().first() + QStringLiteral("/inside"))).isDir());
    defaults->set(key, 3);
    EXPECT_TRUE(defaults->synchronize());
}

TEST_F(UserDefaultsTest, aPipeInTheFilesPlaceHoldsNothingUp) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    open();
    EXPECT_EQ(setAside().size(), 1);
}

TEST_F(UserDefaultsTest, aFileAboveTheLimitIsSetAside) {
    QByteArray large = plist("<key>key</key><integer>3</integer>");
    large.append(QByteArray(64 * 1024 * 1024 - large.size(), ' '));
    writeFile(path, large);
    open();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_TRUE(setAside().isEmpty());

    writeFile(path, large + ' ');
    open();
    EXPECT_FALSE(defaults->contains(key));
    EXPECT_EQ(setAside().size(), 1);
}

TEST_F(UserDefaultsTest, twoUnreadableFilesOfOneSecondHaveNamesOfTheirOwn) {
    for (const char *each : {"first", "second", "third"}) {
        writeFile(path, each);
        open();
    }
    const QString name = QStringLiteral("com.veltrane.Tavrine.plist.unreadable-20260131-120000");
    EXPECT_EQ(setAside(), (QStringList{name, name + text("-2"), name + text("-3")}));
    EXPECT_EQ(contentOf(QFileInfo(path).dir().filePath(name)), "first");
    EXPECT_EQ(contentOf(QFileInfo(path).dir().filePath(name + text("-3"))), "third");
}

TEST_F(UserDefaultsTest, aChangeFromOutsideIsReadWithOneNotice) {
    defaults->set(key, 3);
    defaults->set(text("other"), 4);
    time.runPending();
    letNoticesCome();
    changeCount = 0;
    writeFile(path, plist("<key>key</key><integer>5</integer><key>new</key><true/>"));
    EXPECT_TRUE(wait([&] { return defaults->get<qint64>(key) == 5; }));
    EXPECT_EQ(defaults->get<bool>(text("new")), true);
    EXPECT_FALSE(defaults->contains(text("other")));
    letNoticesCome();
    EXPECT_EQ(changeCount, 1);
}

TEST_F(UserDefaultsTest, everyFileThatAnotherProgramPutsInItsPlaceIsRead) {
    defaults->set(key, 0);
    time.runPending();
    for (int i = 1; i <= 3; ++i) {
        writeFile(path + text(".new"), plist("<key>key</key><integer>" + QByteArray::number(i) + "</integer>"));
        ASSERT_EQ(::rename(QFile::encodeName(path + text(".new")).constData(), QFile::encodeName(path).constData()), 0);
        EXPECT_TRUE(wait([&] { return defaults->get<qint64>(key) == i; })) << i;
    }
}

TEST_F(UserDefaultsTest, aFileThatAppearsInAFolderThatAppearsIsRead) {
    ASSERT_FALSE(QFileInfo(path).dir().exists());
    writeFile(path, plist("<key>key</key><integer>5</integer>"));
    EXPECT_TRUE(wait([&] { return defaults->get<qint64>(key) == 5; }));
}

TEST_F(UserDefaultsTest, aFileBehindALinkIsWatchedAndKeepsItsLink) {
    const QString real = folder.filePath(text("elsewhere/real.plist"));
    writeFile(real, plist("<key>key</key><integer>1</integer>"));
    QDir().mkpath(QFileInfo(path).absolutePath());
    ASSERT_TRUE(QFile::link(real, path));
    open();
    writeFile(real + text(".new"), plist("<key>key</key><integer>2</integer>"));
    ASSERT_EQ(::rename(QFile::encodeName(real + text(".new")).constData(), QFile::encodeName(real).constData()), 0);
    EXPECT_TRUE(wait([&] { return defaults->get<qint64>(key) == 2; }));
    defaults->set(key, 3);
    ASSERT_TRUE(defaults->synchronize());
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_THAT(contentOf(real).toStdString(), HasSubstr("<integer>3</integer>"));
}

TEST_F(UserDefaultsTest, anOwnWriteDoesNotComeBackAsAChange) {
    for (int i = 0; i < 5; ++i) {
        defaults->set(key, i);
        time.runPending();
        letNoticesCome();
    }
    EXPECT_EQ(changeCount, 5);
}

TEST_F(UserDefaultsTest, anotherSpellingOfTheSameValuesIsNoChange) {
    defaults->set(key, 3);
    time.runPending();
    changeCount = 0;
    writeFile(path, "<plist version=\"1.0\"><dict><key>key</key>\n<integer>3</integer></dict></plist>");
    letNoticesCome();
    EXPECT_EQ(changeCount, 0);
    defaults->set(text("other"), 4);
    reopen();
    EXPECT_TRUE(setAside().isEmpty());
    EXPECT_EQ(defaults->get<qint64>(text("other")), 4);
}

TEST_F(UserDefaultsTest, whereBothSidesChangedOneKeyOursStands) {
    defaults->set(text("both"), 0);
    defaults->set(text("theirs"), 0);
    defaults->set(text("removed"), 0);
    time.runPending();
    writeFile(path, plist("<key>both</key><integer>2</integer><key>theirs</key><integer>2</integer>"
                          "<key>removed</key><integer>2</integer>"));
    defaults->set(text("both"), 1);
    defaults->remove(text("removed"));
    changeCount = 0;
    time.runPending(); // the write comes before any notice of the change
    EXPECT_EQ(defaults->get<qint64>(text("both")), 1);
    EXPECT_EQ(defaults->get<qint64>(text("theirs")), 2);
    EXPECT_FALSE(defaults->contains(text("removed")));
    EXPECT_EQ(changeCount, 1);
    reopen();
    EXPECT_EQ(defaults->get<qint64>(text("both")), 1);
    EXPECT_EQ(defaults->get<qint64>(text("theirs")), 2);
    EXPECT_FALSE(defaults->contains(text("removed")));
}

TEST_F(UserDefaultsTest, aFileThatBecomesUnreadableIsSetAsideWhenWeNextWrite) {
    defaults->set(key, 3);
    time.runPending();
    changeCount = 0;
    writeFile(path, "<plist><dict><key>half");
    letNoticesCome();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(content(), "<plist><dict><key>half");
    EXPECT_TRUE(setAside().isEmpty());
    EXPECT_EQ(changeCount, 0);

    defaults->set(text("other"), 4);
    time.runPending();
    ASSERT_EQ(setAside().size(), 1);
    EXPECT_EQ(contentOf(QFileInfo(path).dir().filePath(setAside().first())), "<plist><dict><key>half");
    reopen();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(defaults->get<qint64>(text("other")), 4);
}

TEST_F(UserDefaultsTest, aFileThatWasOnlyHalfWrittenIsReadOnceItIsWhole) {
    defaults->set(key, 3);
    time.runPending();
    writeFile(path, "<plist><dict><key>half");
    letNoticesCome();
    writeFile(path, plist("<key>key</key><integer>5</integer>"));
    EXPECT_TRUE(wait([&] { return defaults->get<qint64>(key) == 5; }));
    EXPECT_TRUE(setAside().isEmpty());
}

TEST_F(UserDefaultsTest, aFileThatHasGoneComesBackWithTheNextWrite) {
    defaults->set(key, 3);
    time.runPending();
    changeCount = 0;
    ASSERT_TRUE(QFile::remove(path));
    letNoticesCome();
    EXPECT_EQ(changeCount, 0);
    defaults->set(text("other"), 4);
    reopen();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(defaults->get<qint64>(text("other")), 4);
}

} // namespace
} // namespace tavrine

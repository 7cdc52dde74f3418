#include "base/UserDefaults.h"

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "support/ReadOnlyFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using Array = UserDefaults::Array;
using Value = UserDefaults::Value;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

class UserDefaultsTest : public testing::Test {
protected:
    UserDefaultsTest() {
        changes = center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                     [this](const Notification &) { ++changeCount; });
        open();
    }

    void open() { defaults = std::make_unique<UserDefaults>(path, time, center); }

    /// Ends this program and starts the next.
    void reopen() {
        defaults.reset();
        open();
    }

    static QByteArray contentOf(const QString &file) {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(none)");
    }
    [[nodiscard]] QByteArray content() const { return contentOf(path); }

    static void writeFile(const QString &file, const QByteArray &bytes) {
        QDir().mkpath(QFileInfo(file).absolutePath());
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        ASSERT_EQ(f.write(bytes), bytes.size());
    }

    static QByteArray plist(const QByteArray &entries) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n<dict>" +
               entries + "</dict>\n</plist>\n";
    }

    [[nodiscard]] QStringList setAside() const {
        return QDir(QFileInfo(path).absolutePath())
            .entryList({QStringLiteral("*.unreadable-*")}, QDir::AllEntries | QDir::System, QDir::Name);
    }

    /// Lets the notices of the operating system and the work that they hand in come, until `condition` holds.
    bool wait(const std::function<bool()> &condition) {
        return QTest::qWaitFor([&] {
            time.runPending();
            return condition();
        });
    }

    /// Long enough for a notice that must not come; the notices of a change take a millisecond or two.
    void letNoticesCome() {
        for (int i = 0; i < 10; ++i) {
            QTest::qWait(10);
            time.runPending();
        }
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("config/com.veltrane.Tavrine.plist"));
    VirtualTime time;
    NotificationCenter center;
    NotificationCenter::Token changes;
    int changeCount = 0;
    std::unique_ptr<UserDefaults> defaults;
    const QString key = QStringLiteral("key");
};

TEST_F(UserDefaultsTest, aKeyThatWasNeverSetHasNoValue) {
    EXPECT_FALSE(defaults->contains(key));
    EXPECT_EQ(defaults->get<bool>(key), std::nullopt);
    EXPECT_EQ(defaults->get<qint64>(key, 7), 7);
}

TEST_F(UserDefaultsTest, everyTypeReadsBackAfterARestart) {
    const Array array{Value(text("a")), Value(qint64{1}), Value(true), Value(Array{Value(2.5)}), Value(Array{})};
    defaults->set(text("bool"), true);
    defaults->set(text("no"), false);
    defaults->set(text("int"), -5);
    defaults->set(text("least"), std::numeric_limits<qint64>::min());
    defaults->set(text("most"), std::numeric_limits<qint64>::max());
    defaults->set(text("double"), 0.1);
    defaults->set(text("huge"), 1e300);
    defaults->set(text("infinite"), -INFINITY);
    defaults->set(text("string"), text("<é & 😀>"));
    defaults->set(text("emptyString"), QString());
    defaults->set(text("data"), QByteArray("\0\x01\xff", 3));
    defaults->set(text("emptyData"), QByteArray());
    defaults->set(text("array"), array);
    reopen();
    EXPECT_EQ(defaults->get<bool>(text("bool")), true);
    EXPECT_EQ(defaults->get<bool>(text("no")), false);
    EXPECT_EQ(defaults->get<qint64>(text("int")), -5);
    EXPECT_EQ(defaults->get<qint64>(text("least")), std::numeric_limits<qint64>::min());
    EXPECT_EQ(defaults->get<qint64>(text("most")), std::numeric_limits<qint64>::max());
    EXPECT_EQ(defaults->get<double>(text("double")), 0.1);
    EXPECT_EQ(defaults->get<double>(text("huge")), 1e300);
    EXPECT_EQ(defaults->get<double>(text("infinite")), -INFINITY);
    EXPECT_EQ(defaults->get<QString>(text("string")), text("<é & 😀>"));
    EXPECT_EQ(defaults->get<QString>(text("emptyString")), QString());
    EXPECT_EQ(defaults->get<QByteArray>(text("data")), QByteArray("\0\x01\xff", 3));
    EXPECT_EQ(defaults->get<QByteArray>(text("emptyData")), QByteArray());
    EXPECT_EQ(defaults->get<Array>(text("array")), array);
}

TEST_F(UserDefaultsTest, aValueIsOfOneTypeOnly) {
    defaults->set(text("bool"), true);
    defaults->set(text("int"), 1);
    defaults->set(text("double"), 1.0);
    defaults->set(text("string"), text("true"));
    reopen();
    for (const char *each : {"int", "double", "string"})
        EXPECT_EQ(defaults->get<bool>(text(each)), std::nullopt) << each;
    for (const char *each : {"bool", "double", "string"})
        EXPECT_EQ(defaults->get<qint64>(text(each)), std::nullopt) << each;
    for (const char *each : {"bool", "int", "string"})
        EXPECT_EQ(defaults->get<double>(text(each)), std::nullopt) << each;
    for (const char *each : {"bool", "int", "double"})
        EXPECT_EQ(defaults->get<QString>(text(each)), std::nullopt) << each;
}

TEST_F(UserDefaultsTest, aDateOfWholeSecondsReadsBackToTheLastBit) {
    const std::vector<Date> dates{{1769860800.0},        {0.0},         {-1.0}, Date::distantPast(),
                                  Date::distantFuture(), {978307200.0}, {1e18}};
    for (size_t i = 0; i < dates.size(); ++i)
        defaults->set(QString::number(i), dates[i]);
    reopen();
    for (size_t i = 0; i < dates.size(); ++i)
        EXPECT_EQ(defaults->get<Date>(QString::number(i)), dates[i]) << dates[i].secondsSince1970;
}

TEST_F(UserDefaultsTest, aDateIsADateInTheFileAndKeptToTheSecondAtOnce) {
    for (const auto &[set, kept] :
         {std::pair{1769860800.0, 1769860800.0}, {1769860800.999, 1769860800.0}, {-0.25, -1.0}}) {
        defaults->set(key, Date{set});
        EXPECT_EQ(defaults->get<Date>(key), Date{kept}) << set;
        reopen();
        EXPECT_EQ(defaults->get<Date>(key), Date{kept}) << set;
        EXPECT_THAT(content().toStdString(), HasSubstr("<date>")) << set;
    }
    defaults->set(key, Array{Value(Date{1769860800.5})});
    EXPECT_EQ(defaults->get<Array>(key), Array{Value(Date{1769860800.0})});
    reopen();
    EXPECT_EQ(defaults->get<Array>(key), Array{Value(Date{1769860800.0})});
    EXPECT_THAT(content().toStdString(), HasSubstr("<date>2026-01-31T12:00:00Z</date>"));
}

TEST_F(UserDefaultsTest, aDateInTheSameSecondWritesNoFile) {
    defaults->set(key, Date{1769860800.25});
    defaults->synchronize();
    const QByteArray before = content();
    ASSERT_TRUE(QFile::remove(path));
    defaults->set(key, Date{1769860800.75});
    defaults->synchronize();
    EXPECT_FALSE(QFile::exists(path)) << before.toStdString();
}

TEST_F(UserDefaultsTest, aDateOfAnEarlierVersionIsReadAndBecomesADate) {
    writeFile(path, plist("<key>LastLaunchDate</key><dict><key>TavrineSecondsSince1970</key>"
                          "<real>1769860800.5</real></dict>"));
    open();
    EXPECT_EQ(defaults->get<Date>(text("LastLaunchDate")), Date{1769860800.5});
    defaults->set(text("LastLaunchDate"), Date{1769860801.5});
    reopen();
    EXPECT_EQ(defaults->get<Date>(text("LastLaunchDate")), Date{1769860801.0});
    EXPECT_THAT(content().toStdString(), HasSubstr("<date>2026-01-31T12:00:01Z</date>"));
}

TEST_F(UserDefaultsTest, aStringThatXmlCannotCarryReadsBackAsItWas) {
    const QString loneSurrogate = text("x") + QChar(0xd800) + text("y");
    const std::vector<QString> strings{text("a\x01 b"),
                                       text("a\r\nb"),
                                       text("tab\t and line\n feed"),
                                       QString(QChar(0)) + text("after"),
                                       loneSurrogate,
                                       QString(QChar(0xffff)),
                                       text("\x1b[31mred")};
    for (size_t i = 0; i < strings.size(); ++i)
        defaults->set(QString::number(i), strings[i]);
    defaults->set(text("array"), Array{Value(strings[0]), Value(strings[2])});
    reopen();
    EXPECT_TRUE(setAside().isEmpty());
    for (size_t i = 0; i < strings.size(); ++i)
        EXPECT_EQ(defaults->get<QString>(QString::number(i)), strings[i]) << i;
    EXPECT_EQ(defaults->get<Array>(text("array")), (Array{Value(strings[0]), Value(strings[2])}));
}

TEST_F(UserDefaultsTest, aValueIsVisibleAtOnceAndOnDiskAfterTheTurn) {
    defaults->set(key, true);
    EXPECT_EQ(defaults->get<bool>(key), true);
    EXPECT_FALSE(QFile::exists(path));
    time.runPending();
    EXPECT_THAT(content().toStdString(), HasSubstr("<key>key</key>\n\t<true/>"));
}

TEST_F(UserDefaultsTest, manyChangesInOneTurnAreWrittenOnce) {
    defaults->set(key, 0);
    time.runPending();
    // Each write makes a new file; an open one shows the inode that is replaced.
    const auto inode = [&] {
        struct stat status {};
        ::stat(QFile::encodeName(path).constData(), &status);
        return status.st_ino;
    };
    QFile keptOpen(path);
    ASSERT_TRUE(keptOpen.open(QIODevice::ReadOnly));
    const auto before = inode();
    int writes = 0;
    for (int i = 1; i <= 20; ++i) {
        defaults->set(key, i);
        writes += inode() != before ? 1 : 0;
    }
    EXPECT_EQ(writes, 0);
    time.runPending();
    EXPECT_NE(inode(), before);
    EXPECT_THAT(content().toStdString(), HasSubstr("<integer>20</integer>"));
    const auto after = inode();
    time.advance(10s);
    EXPECT_EQ(inode(), after);
}

TEST_F(UserDefaultsTest, whatIsStillUnwrittenIsWrittenAtTheEnd) {
    defaults->set(key, 3);
    defaults.reset();
    EXPECT_THAT(content().toStdString(), HasSubstr("<integer>3</integer>"));
}

TEST_F(UserDefaultsTest, theFileAndItsFolderBelongToThePersonAlone) {
    defaults->set(key, 3);
    ASSERT_TRUE(defaults->synchronize());
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    ASSERT_EQ(::stat(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
}

TEST_F(UserDefaultsTest, aRemovedKeyIsGoneAfterARestart) {
    defaults->set(key, 3);
    defaults->set(text("other"), 4);
    time.runPending();
    defaults->remove(key);
    EXPECT_FALSE(defaults->contains(key));
    reopen();
    EXPECT_FALSE(defaults->contains(key));
    EXPECT_EQ(defaults->get<qint64>(text("other")), 4);
}

TEST_F(UserDefaultsTest, whatCannotBeWrittenStaysInMemoryAndIsTriedAgainWithTheNextChange) {
    const QString config = QFileInfo(path).absolutePath();
    writeFile(config, "a file where the folder should be");
    defaults->set(key, 3);
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(contentOf(config), "a file where the folder should be");

    ASSERT_TRUE(QFile::remove(config));
    defaults->set(text("other"), 4);
    time.runPending();
    reopen();
    EXPECT_EQ(defaults->get<qint64>(key), 3);
    EXPECT_EQ(defaults->get<qint64>(text("other")), 4);
}

TEST_F(UserDefaultsTest, inAFolderThatMayOnlyBeReadTheFileStaysAndTheValueIsInMemory) {
    defaults->set(text("a"), 1);
    time.runPending();
    const QByteArray written = content();
    {
        const ReadOnlyFolder sealed(QFileInfo(path).path());
        defaults->set(text("a"), 2);
        EXPECT_FALSE(defaults->synchronize());
        EXPECT_EQ(defaults->get<qint64>(text("a")), 2);
    }
    EXPECT_EQ(content(), written);
    EXPECT_TRUE(defaults->synchronize());
    reopen();
    EXPECT_EQ(defaults->get<qint64>(text("a")), 2);
}

TEST_F(UserDefaultsTest, moreThanCanBeReadAgainIsNotWritten) {
    defaults->set(text("small"), 1);
    ASSERT_TRUE(defaults->synchronize());
    const QByteArray before = content();
    defaults->set(key, QByteArray(60 * 1024 * 1024, 'x')); // 80 MiB as text
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(content(), before);
    defaults->remove(key);
    EXPECT_TRUE(defaults->synchronize());
}

TEST_F(UserDefaultsTest, aWholeOldHistoryIsReadAndWritten) {
    const QByteArray history(40 * 1024 * 1024, 'h');
    defaults->set(text("ClipboardHistory"), history);
    ASSERT_TRUE(defaults->synchronize());
    reopen();
    EXPECT_EQ(defaults->get<QByteArray>(text("ClipboardHistory")), history);
}

TEST_F(UserDefaultsTest, unknownKeysAndTypesAreKeptAsTheyAre) {
    writeFile(path,
              plist("<key>AppleLanguages</key><array><string>de</string><dict><key>n</key><date>2020-01-01T00:00:00Z"
                    "</date></dict></array><key>nested</key><dict><key>deep</key><dict><key>er</key><real>0.5</real>"
                    "</dict></dict><key>uid</key><dict><key>CF$UID</key><integer>7</integer></dict>"
                    "<key>big</key><integer>18446744073709551615</integer><key>old</key>"
                    "<date>0001-01-01T00:00:00Z</date><key>mine</key><true/>"));
    open();
    EXPECT_TRUE(defaults->contains(text("nested")));
    EXPECT_EQ(defaults->get<Array>(text("AppleLanguages")), std::nullopt);
    EXPECT_EQ(defaults->get<qint64>(text("big")), std::nullopt);
    const Date old{-62135596800.0};
    EXPECT_EQ(defaults->get<Date>(text("old")), old);
    defaults->set(text("mine"), false);
    reopen();
    EXPECT_EQ(defaults->get<Date>(text("old")), old);
    const QByteArray squeezed = content().replace("\n", "").replace("\t", "");
    for (const char *part : {"<key>AppleLanguages</key><array><string>de</string><dict><key>n</"
                             "key><date>2020-01-01T00:00:00Z</date></dict>"
                             "</array>",
                             "<key>nested</key><dict><key>deep</key><dict><key>er</key><real>0.5</real></dict></dict>",
                             "<key>uid</key><dict><key>CF$UID</key><integer>7</integer></dict>",
                             "<key>big</key><integer>18446744073709551615</integer>", "<key>mine</key><false/>"})
        EXPECT_THAT(squeezed.toStdString(), HasSubstr(part));
}

TEST_F(UserDefaultsTest, aChangePostsOneNoticeAtOnce) {
    defaults->set(key, 3);
    EXPECT_EQ(changeCount, 1);
    defaults->remove(key);
    EXPECT_EQ(changeCount, 2);
    time.runPending();
    EXPECT_EQ(changeCount, 2);
}

TEST_F(UserDefaultsTest, settingAValueToWhatItIsPostsTheNotice) {
    defaults->set(key, 3);
    defaults->set(key, 3);
    EXPECT_EQ(changeCount, 2);
}

TEST_F(UserDefaultsTest, removingWhatIsNotTherePostsTheNotice) {
    defaults->remove(text("absent"));
    EXPECT_EQ(changeCount, 1);
}

TEST_F(UserDefaultsTest, writesThatChangeNoValueLeaveTheFileAlone) {
    defaults->set(key, 3);
    time.runPending();
    ASSERT_TRUE(QFile::remove(path)); // a write would bring it back
    defaults->set(key, 3);
    defaults->remove(text("absent"));
    time.runPending();
    EXPECT_FALSE(QFile::exists(path));
    defaults->set(key, 3.0); // another type is another value
    time.runPending();
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(UserDefaultsTest, anObserverMaySetAValueItself) {
    const auto token =
        center.addObserver(QLatin1String(UserDefaults::didChangeNotification), [this](const Notification &) {
            if (!defaults->contains(text("seen")))
                defaults->set(text("seen"), true);
        });
    defaults->set(key, 3);
    EXPECT_EQ(changeCount, 2);
    EXPECT_EQ(defaults->get<bool>(text("seen")), true);
}

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

#include "UserDefaultsTest.h"

namespace tavrine {
namespace {

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

} // namespace
} // namespace tavrine

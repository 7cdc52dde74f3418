// What becomes of what a person did when one system call below it fails, once.
#include "clipboard/ManagerTest.h"
#include "reliability/FailingCall.h"

#include <cerrno>

using tavrine::testing::FailingCall;
using tavrine::testing::FaultKind;

namespace tavrine {
namespace {

using namespace std::chrono_literals;

class FailingCalls : public ManagerTest {
protected:
    const QString path = home.path() + str("/preferences/values.plist");
    const QString key = str("key");
};

struct OfAPicture {
    FaultKind kind;
    int error;
};

class OfAPictureThatIsCopied : public FailingCalls, public ::testing::WithParamInterface<OfAPicture> {};

TEST_P(OfAPictureThatIsCopied, keepsItOutOfTheHistoryNoLongerThanOneCall) {
    start();
    const QImage image = picture(3, 2);
    const FailingCall call(GetParam().kind, 1, GetParam().error);
    const auto name = manager->saveImage(image);
    EXPECT_TRUE(call.hasFailed());
    ASSERT_TRUE(name);
    EXPECT_EQ(storedImages(), QStringList{*name});
}

INSTANTIATE_TEST_SUITE_P(Each, OfAPictureThatIsCopied,
                         ::testing::Values(OfAPicture{FaultKind::open, EMFILE}, OfAPicture{FaultKind::write, ENOSPC},
                                           OfAPicture{FaultKind::sync, EIO}, OfAPicture{FaultKind::rename, ENOSPC}));

TEST_F(FailingCalls, preferencesThatCannotBeOpenedOnceAreReadAllTheSame) {
    {
        UserDefaults before(path, time, center);
        before.set(key, 3);
    }
    const FailingCall call(FaultKind::open, 1, EMFILE);
    const UserDefaults after(path, time, center);
    EXPECT_TRUE(call.hasFailed());
    EXPECT_EQ(after.get<qint64>(key), 3);
    EXPECT_EQ(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files).size(), 1);
}

TEST_F(FailingCalls, preferencesThatCannotBeOpenedOnceBeforeAWriteAreNotSetAside) {
    UserDefaults values(path, time, center);
    values.set(key, 3);
    ASSERT_TRUE(values.synchronize());
    values.set(key, 4);
    const FailingCall call(FaultKind::open, 1, EMFILE);
    EXPECT_TRUE(values.synchronize());
    EXPECT_TRUE(call.hasFailed());
    EXPECT_EQ(QDir(QFileInfo(path).absolutePath()).entryList(QDir::Files).size(), 1);
}

TEST_F(FailingCalls, aPreferenceThatCouldNotBeWrittenIsWrittenASecondLater) {
    time.runPending(); // the fixture's own
    UserDefaults values(path, time, center);
    values.set(key, 3);
    {
        const FailingCall call(FaultKind::write, 1, ENOSPC);
        time.runPending();
        EXPECT_TRUE(call.hasFailed());
    }
    time.advance(999ms);
    EXPECT_FALSE(QFile::exists(path));
    time.advance(1ms);
    EXPECT_TRUE(QFile::exists(path));
    const UserDefaults after(path, time, center);
    EXPECT_EQ(after.get<qint64>(key), 3);
}

} // namespace
} // namespace tavrine

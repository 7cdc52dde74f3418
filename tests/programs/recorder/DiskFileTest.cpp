// The file of a movie on a disk: what of it reaches the disk, and what is heard of that.
#include "programs/recorder/DiskFile.h"

#include <atomic>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tavrine {
namespace {

class DiskFileTest : public testing::Test {
protected:
    DiskFileTest() { ::unlink(name); }
    ~DiskFileTest() override { ::close(descriptor); }

    char name[32] = "/tmp/tavrine-disk-XXXXXX";
    const int descriptor = ::mkstemp(name);
    std::atomic<int> progress = 0;
};

TEST_F(DiskFileTest, aLargePieceIsHeardOfMegabyteByMegabyteAndEachTimeThatItIsOnTheDisk) {
    ASSERT_GE(descriptor, 0);
    DiskFile file(descriptor, [this] { ++progress; });
    file.append(std::string(2 * DiskFile::mostUnsynced, 'x'));
    const MovieStore::State state = file.settle();
    EXPECT_EQ(state.length, 2 * DiskFile::mostUnsynced);
    EXPECT_EQ(state.error, 0);
    EXPECT_EQ(progress, int(2 * DiskFile::mostUnsynced >> 20) + 2);
}

TEST_F(DiskFileTest, aDiskThatRefusesIsNoProgress) {
    DiskFile file(-1, [this] { ++progress; });
    file.append("x");
    EXPECT_EQ(file.settle().error, EBADF);
    EXPECT_TRUE(progress == 0);
}

} // namespace
} // namespace tavrine

// The movie's file while it grows, at its end, and when the disk takes no more.
#include "programs/recorder/MovieFile.h"

#include "programs/recorder/DiskFile.h"
#include "support/FileSizeLimit.h"
#include "support/MovieReading.h"

#include <QTemporaryFile>

#include <cerrno>
#include <optional>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

/// A store in memory that does what is asked at once, and can be full.
class MemoryStore final : public MovieStore {
public:
    void append(std::string added) override {
        if (error != 0 || bytes.size() + added.size() > room)
            error = ENOSPC;
        else
            bytes.append(added);
        note();
    }
    void overwrite(std::uint64_t offset, std::string added) override {
        if (offset + added.size() > bytes.size())
            return;
        if (refusesOverwrites)
            error = EIO;
        else
            bytes.replace(offset, added.size(), added);
        note();
    }
    void sync() override { ++syncs; }
    [[nodiscard]] State settle() override { return {bytes.size(), std::exchange(error, 0)}; }

    [[nodiscard]] QByteArray whole() const { return QByteArray::fromStdString(bytes.substr(0, 4 << 20)); }

    void note() {
        if (isNoting)
            states.push_back(boxesOf(whole()));
    }

    bool isNoting = true;
    std::string bytes;
    std::uint64_t room = std::uint64_t(1) << 40;
    bool refusesOverwrites = false;
    int error = 0;
    int syncs = 0;
    QList<QList<QByteArray>> states;
};

MovieFormat format(bool hasSound = false) {
    MovieFormat made;
    made.pictures = {.width = 64, .height = 48, .sequenceParameters = {}, .pictureParameters = "\x68"};
    made.pictures.sequenceParameters = std::string("\x67\x64\x00\x1f", 4);
    if (hasSound)
        made.sound = SoundFormat{
            .channels = 2, .sampleRate = 44'100, .bitRate = 128'000, .priming = 1024, .configuration = "\x12\x10"};
    return made;
}

/// The number of `length` bytes at `at`.
std::uint64_t numberAt(const std::string &bytes, std::size_t at, int length) {
    std::uint64_t value = 0;
    for (int i = 0; i < length; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[at + std::size_t(i)]);
    return value;
}

/// The contents of the boxes of this type that stand behind the last "moov", as their positions.
std::vector<std::size_t> boxesInIndex(const std::string &bytes, const char *type) {
    std::vector<std::size_t> found;
    for (std::size_t at = bytes.rfind("moov"); (at = bytes.find(type, at)) != std::string::npos; at += 4)
        found.push_back(at + 4);
    return found;
}

class MovieFileTest : public testing::Test {
protected:
    void addSeconds(MovieFile &movie, int seconds, int framesPerSecond = 60) {
        for (int i = 0; i < seconds * framesPerSecond; ++i) {
            if (i > 0 && i % (framesPerSecond / 2) == 0)
                movie.writeFragment(ticksPerSecond / 60);
            // The length differs, and so does the way from one to the next.
            const std::string sample = "P" + std::to_string(i) + std::string(std::size_t(i % 7), '.');
            const auto jitter = i == 0 ? 0 : std::uint64_t(i % 3);
            movie.addPicture(sample, std::uint64_t(i) * ticksPerSecond / std::uint64_t(framesPerSecond) + jitter,
                             i % 180 == 0);
        }
    }
    MemoryStore store;
};

TEST_F(MovieFileTest, everyStateOfTheFileIsAWholeMovieOfBoxes) {
    MovieFile movie(store, format(true));
    for (int i = 0; i < 4; ++i) {
        movie.addPicture("picture", std::uint64_t(i) * 45'000, i == 0);
        movie.addPacket("sound");
        movie.writeFragment(1500);
    }
    movie.extendLastPicture(9000);
    EXPECT_EQ(movie.finish(9000, 4000), 0);
    ASSERT_EQ(store.states.size(), 8); // head, four fragments, one duration, the room, the switch
    for (const QList<QByteArray> &boxes : store.states)
        EXPECT_FALSE(boxes.contains("broken"));
    EXPECT_EQ(store.states[4], (QList<QByteArray>{"ftyp", "moov", "free", "moof", "mdat", "moof", "mdat", "moof",
                                                  "mdat", "moof", "mdat"}));
    EXPECT_EQ(store.states[6], store.states[4]); // the index is in its room and nobody sees it
    EXPECT_EQ(store.states[7], (QList<QByteArray>{"ftyp", "free", "moov", "free", "mdat"}));
    EXPECT_EQ(store.syncs, 1);
}

TEST_F(MovieFileTest, theIndexNamesEverySampleWhereItStands) {
    MovieFile movie(store, format(true));
    for (int i = 0; i < 5; ++i) {
        movie.addPicture("picture " + std::to_string(i), std::uint64_t(i) * 1500, i == 0);
        movie.addPacket("sound " + std::to_string(i));
        movie.addPacket("more of it");
        movie.writeFragment(1500);
    }
    ASSERT_EQ(movie.finish(3000, 9 * 1024), 0);
    const auto offsets = boxesInIndex(store.bytes, "co64");
    ASSERT_EQ(offsets.size(), 2U);
    for (std::size_t i = 0; i < 5; ++i) {
        const std::uint64_t picture = numberAt(store.bytes, offsets[0] + 8 + 8 * i, 8);
        const std::uint64_t sound = numberAt(store.bytes, offsets[1] + 8 + 8 * i, 8);
        EXPECT_EQ(store.bytes.substr(picture, 9), "picture " + std::to_string(i));
        EXPECT_EQ(store.bytes.substr(sound, 17), "sound " + std::to_string(i) + "more of it");
    }
}

TEST_F(MovieFileTest, theTimesOfPicturesAreKeptAndTheLastStaysAsLongAsItWasTold) {
    MovieFile movie(store, format());
    for (const std::uint64_t ticks : {0U, 1500U, 1600U, 900'000U}) {
        movie.addPicture("x", ticks, ticks == 0);
        movie.writeFragment(7);
    }
    ASSERT_EQ(movie.finish(450'000, 0), 0);
    const auto times = boxesInIndex(store.bytes, "stts");
    ASSERT_EQ(times.size(), 1U);
    EXPECT_EQ(numberAt(store.bytes, times[0] + 4, 4), 4U);
    const std::uint64_t wanted[] = {1500, 100, 898'400, 450'000};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(numberAt(store.bytes, times[0] + 12 + 8 * i, 4), wanted[i]);
}

TEST_F(MovieFileTest, anIndexThatFillsItsRoomStandsInItAndALargerOneBehindTheData) {
    // How long the index of ten seconds is.
    MovieFile first(store, format());
    addSeconds(first, 10);
    ASSERT_EQ(first.finish(1500, 0), 0);
    const std::size_t index = numberAt(store.bytes, store.bytes.rfind("moov") - 4, 4);
    constexpr std::uint64_t heads = 8 + 16;
    for (const auto &[room, isInFront] : {std::pair(index + heads, true), std::pair(index + heads + 8, true),
                                          std::pair(index + heads + 7, false), std::pair(index + heads - 1, false)}) {
        MemoryStore other;
        MovieFile movie(other, format(), room);
        addSeconds(movie, 10);
        ASSERT_EQ(movie.finish(1500, 0), 0);
        const QList<QByteArray> boxes = boxesOf(other.whole());
        EXPECT_FALSE(boxes.contains("broken"));
        EXPECT_EQ(boxes.indexOf("moov") < boxes.indexOf("mdat"), isInFront) << room - index;
        EXPECT_EQ(boxes.count("moov"), 1);
        EXPECT_EQ(boxes.count("mdat"), 1);
        const std::size_t offsets = boxesInIndex(other.bytes, "co64").at(0);
        EXPECT_EQ(other.bytes.substr(numberAt(other.bytes, offsets + 8, 8), 2), "P0");
    }
}

TEST_F(MovieFileTest, threeHoursWithSoundHaveAnIndexOfAllOfThem) {
    store.isNoting = false;
    MovieFile movie(store, format(true));
    constexpr int seconds = 3 * 3600;
    for (int i = 0; i < seconds * 2; ++i) {
        for (int frame = 0; frame < 30; ++frame)
            movie.addPicture("p", std::uint64_t(i) * 45'000 + std::uint64_t(frame) * 1500, frame == 0 && i % 6 == 0);
        for (int packet = 0; packet < 22; ++packet)
            movie.addPacket("s");
        movie.writeFragment(1500);
    }
    ASSERT_EQ(movie.finish(1500, std::uint64_t(seconds) * 44'100), 0);
    const auto sizes = boxesInIndex(store.bytes, "stsz");
    ASSERT_EQ(sizes.size(), 2U);
    EXPECT_EQ(numberAt(store.bytes, sizes[0] + 8, 4), std::uint64_t(seconds) * 60);
    EXPECT_EQ(numberAt(store.bytes, sizes[1] + 8, 4), std::uint64_t(seconds) * 44);
    const auto all = boxesOf(QByteArray::fromStdString(store.bytes));
    EXPECT_EQ(all, (QList<QByteArray>{"ftyp", "free", "free", "mdat", "moov"}));
}

TEST_F(MovieFileTest, aFullDiskEndsTheMovieBehindItsLastWholeFragment) {
    MovieFile movie(store, format(true));
    for (int i = 0; i < 10; ++i) {
        if (i == 6)
            store.room = store.bytes.size() + 50;
        movie.addPicture("picture " + std::to_string(i), std::uint64_t(i) * 45'000, i % 3 == 0);
        movie.addPacket("sound");
        movie.writeFragment(1500);
    }
    EXPECT_EQ(movie.finish(1500, 10'240), ENOSPC);
    EXPECT_EQ(boxesOf(store.whole()), (QList<QByteArray>{"ftyp", "free", "moov", "free", "mdat"}));
    EXPECT_EQ(numberAt(store.bytes, boxesInIndex(store.bytes, "stsz").at(0) + 8, 4), 6U);
    EXPECT_EQ(numberAt(store.bytes, boxesInIndex(store.bytes, "stsz").at(1) + 8, 4), 6U);
    EXPECT_EQ(numberAt(store.bytes, boxesInIndex(store.bytes, "stss").at(0) + 4, 4), 2U); // of the pictures 0 and 3
}

TEST_F(MovieFileTest, aDiskThatTakesNotEvenTheIndexLeavesTheFragments) {
    MovieFile movie(store, format());
    addSeconds(movie, 2);
    store.refusesOverwrites = true;
    EXPECT_EQ(movie.finish(1500, 0), EIO);
    const QList<QByteArray> boxes = boxesOf(store.whole());
    EXPECT_EQ(boxes.mid(0, 5), (QList<QByteArray>{"ftyp", "moov", "free", "moof", "mdat"}));
    EXPECT_FALSE(boxes.contains("broken"));
}

// The disk.

TEST(DiskFile, whatDoesNotFitIsCutOffAndWhatStandsCanStillBeOverwritten) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    std::optional<FileSizeLimit> small(1000);
    DiskFile disk(file.handle());
    disk.append(std::string(600, 'a'));
    disk.append(std::string(600, 'b'));
    disk.append(std::string(100, 'c')); // would fit, but not where it belongs
    disk.overwrite(10, "X");
    disk.overwrite(599, "no"); // reaches beyond the end
    const MovieStore::State state = disk.settle();
    small.reset();
    EXPECT_EQ(state.length, 600U);
    EXPECT_EQ(state.error, EFBIG);
    EXPECT_EQ(file.size(), 600);
    QByteArray wanted(600, 'a');
    wanted[10] = 'X';
    file.seek(0);
    EXPECT_EQ(file.readAll(), wanted);
    disk.append("d");
    EXPECT_EQ(disk.settle().error, 0);
    EXPECT_EQ(file.size(), 601);
}

} // namespace
} // namespace tavrine::test

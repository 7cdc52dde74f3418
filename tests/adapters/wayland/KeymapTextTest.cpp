#include "adapters/wayland/KeymapText.h"

#include <cstring>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr std::uint32_t longest = 4U << 20;

/// A file with so many bytes: letters, and a zero at the end.
Descriptor fileOf(std::size_t bytes) {
    Descriptor file(::memfd_create("keymap", MFD_CLOEXEC));
    std::string content(bytes, 'k');
    if (bytes > 0)
        content.back() = '\0';
    EXPECT_EQ(::write(file.number(), content.data(), content.size()), static_cast<ssize_t>(bytes));
    return file;
}

TEST(KeymapText, isAllButTheZeroAtItsEndWhereverTheFileStands) {
    const Descriptor file = fileOf(6); // it stands at its end now
    EXPECT_EQ(keymapText(file, 6), "kkkkk");
    EXPECT_EQ(keymapText(file, 6), "kkkkk");
    EXPECT_EQ(keymapText(fileOf(100'000), 100'000).size(), 99'999U); // more than a read may give at once
}

TEST(KeymapText, isNothingOfAFileThatIsShorterThanPromised) {
    EXPECT_EQ(keymapText(fileOf(5), 6), "");
    EXPECT_EQ(keymapText(fileOf(0), 6), "");
    const Descriptor cut = fileOf(100'000);
    ASSERT_EQ(::ftruncate(cut.number(), 4'000), 0);
    EXPECT_EQ(keymapText(cut, 100'000), "");
}

TEST(KeymapText, isNothingOfWhatIsLongerThanAnyKeyboardNeeds) {
    EXPECT_EQ(keymapText(fileOf(longest), longest).size(), longest - 1);
    EXPECT_EQ(keymapText(fileOf(longest + 1), longest + 1), "");
    EXPECT_EQ(keymapText(fileOf(5), 0), "");
}

TEST(KeymapText, isNothingOfWhatIsNoFileAndNobodyWaitsForIt) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const Descriptor from(ends[0]);
    const Descriptor to(ends[1]);
    EXPECT_EQ(keymapText(from, 6), "");
    EXPECT_EQ(keymapText(Descriptor(), 6), "");
}

} // namespace
} // namespace tavrine

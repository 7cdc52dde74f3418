#include "programs/screencapture/CommandLine.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

TEST(CommandLine, takesAFileWithSoundAndWithout) {
    EXPECT_EQ(CommandLine::parse({"-i", "/a.png"}), (CommandLine{"/a.png", false}));
    EXPECT_EQ(CommandLine::parse({"-i", "-x", "/a.png"}), (CommandLine{"/a.png", true}));
    EXPECT_EQ(CommandLine::parse({"-x", "-i", "/a.png"}), (CommandLine{"/a.png", true}));
}

TEST(CommandLine, takesAPictureOfTheScreens) {
    EXPECT_EQ(CommandLine::parse({"-f", "/picture", "-i", "/a.png"}),
              (CommandLine{.file = "/a.png", .picture = "/picture"}));
    EXPECT_EQ(CommandLine::parse({"-i", "-x", "-f", "-i", "/a.png"}),
              (CommandLine{.file = "/a.png", .isSilent = true, .picture = "-i"}));
}

TEST(CommandLine, refusesEverythingElse) {
    for (const std::vector<std::string_view> &arguments :
         std::vector<std::vector<std::string_view>>{{},
                                                    {"-i"},
                                                    {"/a"},
                                                    {"-x", "/a"},
                                                    {"-i", ""},
                                                    {"-i", "/a", "/b"},
                                                    {"-i", "/a", "-x"},
                                                    {"-i", "-i", "/a"},
                                                    {"-i", "-x", "-x", "/a"},
                                                    {"-ix", "/a"},
                                                    {"-i", "-c", "/a"},
                                                    {"-i", "--", "/a"},
                                                    {"-i", "/a", "-f"},
                                                    {"-i", "-f", "/a"},
                                                    {"-i", "-f", "", "/a"},
                                                    {"-i", "-f", "/p", "-f", "/q", "/a"},
                                                    {"-i", "-"}})
        EXPECT_EQ(CommandLine::parse(arguments), std::nullopt);
}

TEST(CommandLine, aColourIsAskedForAlone) {
    const auto line = CommandLine::parse({"-p"});
    ASSERT_TRUE(line);
    EXPECT_TRUE(line->isColour);
    for (const std::vector<std::string_view> &arguments :
         std::vector<std::vector<std::string_view>>{{"-p", "-p"}, {"-p", "/a"}, {"-i", "-p"}, {"-p", "-x"}})
        EXPECT_EQ(CommandLine::parse(arguments), std::nullopt);
}

} // namespace
} // namespace tavrine

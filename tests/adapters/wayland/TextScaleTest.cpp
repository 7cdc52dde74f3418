#include "adapters/wayland/text/TextScale.h"

#include "adapters/wayland/text/DconfFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

constexpr auto key = "/org/gnome/desktop/interface/text-scaling-factor";
constexpr std::uint32_t noParent = UINT32_MAX;

std::string word(std::uint64_t number, int bytes = 4) {
    std::string written;
    for (; bytes > 0; --bytes, number >>= 8)
        written += static_cast<char>(number & 0xff);
    return written;
}

/// A file as dconf's service writes it.
class Dconf {
public:
    void add(const std::string &name, char kind, std::uint32_t parent, const std::string &value = {}) {
        m_entries.push_back({name, kind, parent, value});
    }
    void addNumber(const std::string &name, std::uint32_t parent, double value) {
        add(name, 'v', parent, word(std::bit_cast<std::uint64_t>(value), 8) + std::string("\0d", 2));
    }
    [[nodiscard]] std::string bytes() const {
        constexpr std::size_t head = 24;
        std::string texts;
        std::string entries;
        for (const Entry &each : m_entries) {
            const auto name = static_cast<std::uint32_t>(head + texts.size());
            texts += each.name;
            const auto value = static_cast<std::uint32_t>(head + texts.size());
            texts += each.value;
            entries += word(0) + word(each.parent) + word(name) + word(each.name.size(), 2) + each.kind + '\0' +
                       word(value) + word(value + each.value.size());
        }
        const std::string table = word(1) + word(1) + word(0) + word(0) + entries;
        const auto start = static_cast<std::uint32_t>(head + texts.size());
        return "GVariant" + word(0) + word(0) + word(start) + word(start + table.size()) + texts + table;
    }

private:
    struct Entry {
        std::string name;
        char kind;
        std::uint32_t parent;
        std::string value;
    };
    std::vector<Entry> m_entries;
};

std::string usual(double factor) {
    Dconf file;
    file.add("/", 'L', noParent);
    file.add("org/gnome/desktop/interface/", 'L', 0);
    file.addNumber("cursor-blink", 1, 7);
    file.addNumber("text-scaling-factor", 1, factor);
    return file.bytes();
}

TEST(DconfFile, tellsTheNumberUnderAWholePath) {
    EXPECT_EQ(numberInDconf(usual(1.25), key), 1.25);
    EXPECT_EQ(numberInDconf(usual(1.25), "/org/gnome/desktop/interface/cursor-blink"), 7);
    EXPECT_EQ(numberInDconf(usual(1.25), "text-scaling-factor"), std::nullopt);
    EXPECT_EQ(numberInDconf(usual(1.25), "/x/org/gnome/desktop/interface/text-scaling-factor"), std::nullopt);
}

TEST(DconfFile, tellsNothingOfWhatIsNoNumber) {
    Dconf file;
    file.add(key, 'v', noParent, std::string("1.25\0\0s", 7));
    EXPECT_EQ(numberInDconf(file.bytes(), key), std::nullopt);
}

/// Cut, changed in every byte, or with entries that are each other's parents.
TEST(DconfFile, bearsWhateverBytesThereAre) {
    const std::string whole = usual(1.5);
    for (std::size_t length = 0; length < whole.size(); ++length)
        (void)numberInDconf(whole.substr(0, length), key);
    EXPECT_EQ(numberInDconf(whole.substr(0, whole.size() - 1), key), std::nullopt);
    for (std::size_t place = 0; place < whole.size(); ++place)
        for (const char changed : {'\0', '\x7f', '\xff'}) {
            std::string bytes = whole;
            bytes[place] = changed;
            (void)numberInDconf(bytes, key);
        }
    Dconf ring;
    ring.add("", 'v', 1);
    ring.add("", 'v', 0);
    EXPECT_EQ(numberInDconf(ring.bytes(), ""), std::nullopt);
}

TEST(TextScale, isByTheDotsThatPlasmaForces) {
    EXPECT_EQ(textScaleOfPlasma("[General]\nforceFontDPI=192\nforceFontDPIWayland = 120\n"), 1.25);
    EXPECT_EQ(textScaleOfPlasma("[Other]\nforceFontDPIWayland=120\n"), std::nullopt);
    EXPECT_EQ(textScaleOfPlasma("[General]\nforceFontDPIWayland=0\n"), std::nullopt); // switched off
    EXPECT_EQ(textScaleOfPlasma("[General]\nforceFontDPIWayland=many"), std::nullopt);
}

TEST(TextScale, isWithinWhatGnomesSettingsTake) {
    EXPECT_EQ(sensibleTextScale(0.5), 0.5);
    EXPECT_EQ(sensibleTextScale(0.49), std::nullopt);
    EXPECT_EQ(sensibleTextScale(3), 3);
    EXPECT_EQ(sensibleTextScale(3.01), std::nullopt);
    EXPECT_EQ(sensibleTextScale(std::bit_cast<double>(UINT64_MAX)), std::nullopt); // no number
}

class TextScaleOfSession : public ::testing::Test {
protected:
    void SetUp() override {
        set("XDG_CONFIG_HOME", folder.path().toUtf8());
        set("XDG_CURRENT_DESKTOP", "sway");
        set("QT_WAYLAND_FORCE_DPI", {});
        set("QT_SCALE_FACTOR", {});
        write(QStringLiteral("dconf/user"), QByteArray::fromStdString(usual(1.5)));
        write(QStringLiteral("kcmfonts"), "[General]\nforceFontDPIWayland=120\n");
    }
    void TearDown() override {
        for (auto each = before.rbegin(); each != before.rend(); ++each) // what was set twice was first as it was
            each->second.isNull() ? qunsetenv(each->first) : qputenv(each->first, each->second);
    }
    void set(const char *name, const QByteArray &value) {
        before.emplace_back(name, qEnvironmentVariableIsSet(name) ? qgetenv(name) : QByteArray());
        value.isEmpty() ? qunsetenv(name) : qputenv(name, value);
    }
    void write(const QString &name, const QByteArray &content) const {
        QDir(folder.path()).mkpath(QStringLiteral("dconf"));
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QTemporaryDir folder;
    std::vector<std::pair<const char *, QByteArray>> before;
};

TEST_F(TextScaleOfSession, isThatOfGnomesSettingsWithTheToolkitsFactorOnTop) {
    EXPECT_EQ(textScaleOfSession(), 1.5);
    set("QT_SCALE_FACTOR", "2");
    EXPECT_EQ(textScaleOfSession(), 3);
}

TEST_F(TextScaleOfSession, isPlasmasOnPlasmaAndNowhereElse) {
    set("XDG_CURRENT_DESKTOP", "KDE");
    EXPECT_EQ(textScaleOfSession(), 1.25);
    write(QStringLiteral("kcmfonts"), "[General]\n");
    EXPECT_EQ(textScaleOfSession(), 1.5);
}

TEST_F(TextScaleOfSession, isWhatTheSessionsStartHasToldTheToolkitBeforeAllElse) {
    set("QT_WAYLAND_FORCE_DPI", "192");
    EXPECT_EQ(textScaleOfSession(), 2);
    set("QT_WAYLAND_FORCE_DPI", "96");
    EXPECT_EQ(textScaleOfSession(), 1);
}

TEST_F(TextScaleOfSession, isAsUsualWhereNobodySaysAnything) {
    QFile::remove(folder.filePath(QStringLiteral("dconf/user")));
    EXPECT_EQ(textScaleOfSession(), 1);
}

} // namespace
} // namespace tavrine

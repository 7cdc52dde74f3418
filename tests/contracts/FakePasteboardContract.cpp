#include "adapters/fake/FakePasteboard.h"
#include "contracts/PasteboardContract.h"

namespace tavrine {
namespace {

class FakeWorld final : public PasteboardWorld {
public:
    FakeWorld() { m_pasteboard.setTellsChanges(true); }
    Pasteboard &pasteboard() override { return m_pasteboard; }
    void copyText(const QString &text) override { m_pasteboard.copyFromOutside(text); }
    void copyImage(const QImage &image, const std::optional<QString> &text) override {
        m_pasteboard.copyFromOutside(image, text);
    }
    void copyTyped(const QStringList &types, const QString &text) override {
        m_pasteboard.setContentsFromOutside(types, text);
    }
    void clear() override { m_pasteboard.clearFromOutside(); }
    void endOwner() override { m_pasteboard.endOwner(); }
    void claimWithoutAnswer() override { m_pasteboard.claimFromOutsideWithoutAnswer(); }
    void claimTextWithoutContents() override {
        m_pasteboard.setContentsFromOutside({QLatin1String(pasteboardType::string)});
    }
    bool waitForCount(int count) override { return m_pasteboard.changeCount() >= count; }
    void settle() override {}

private:
    FakePasteboard m_pasteboard;
};

INSTANTIATE_TEST_SUITE_P(fake, PasteboardContract,
                         testing::Values(PasteboardWorldMaker{
                             "fake",
                             []() -> std::unique_ptr<PasteboardWorld> { return std::make_unique<FakeWorld>(); }}),
                         [](const auto &made) { return std::string(made.param.name); });

TEST(FakePasteboard, readsAreCounted) {
    FakePasteboard pasteboard;
    pasteboard.copyFromOutside(QStringLiteral("text"));
    static_cast<void>(pasteboard.string());
    static_cast<void>(pasteboard.string());
    static_cast<void>(pasteboard.image());
    EXPECT_EQ(pasteboard.stringReadCount(), 2);
    EXPECT_EQ(pasteboard.imageReadCount(), 1);
}

TEST(FakePasteboard, contentsCanBeMadeUnreadable) {
    FakePasteboard pasteboard;
    pasteboard.copyFromOutside(QImage(2, 2, QImage::Format_RGB32), QStringLiteral("text"));
    pasteboard.setImageUnreadable(true);
    pasteboard.setStringUnreadable(true);
    EXPECT_FALSE(pasteboard.image());
    EXPECT_FALSE(pasteboard.string());
    EXPECT_TRUE(pasteboard.types());
    pasteboard.setImageUnreadable(false);
    EXPECT_TRUE(pasteboard.image());
}

} // namespace
} // namespace tavrine

#include "adapters/wayland/WaylandPasteboardFixture.h"
#include "contracts/PasteboardContract.h"

namespace tavrine {
namespace {

class WaylandWorld final : public PasteboardWorld {
public:
    WaylandWorld() {
        TestSource().clear();
        m_pasteboard = std::make_unique<WaylandPasteboard>([](const std::string &) {}, patientLimits());
    }
    Pasteboard &pasteboard() override { return *m_pasteboard; }
    void copyText(const QString &text) override { own().ownText(text.toUtf8()); }
    void copyImage(const QImage &image, const std::optional<QString> &text) override {
        TestSource::Contents contents{{"image/png", {.bytes = pngOf(image)}}};
        if (text)
            contents.push_back({"text/plain;charset=utf-8", {.bytes = text->toUtf8()}});
        own().own(contents);
    }
    void copyTyped(const QStringList &types, const QString &text) override {
        const std::map<QString, QByteArray> targets{
            {QLatin1String(pasteboardType::string), "text/plain;charset=utf-8"},
            {QLatin1String(pasteboardType::html), "text/html"},
            {QLatin1String(pasteboardType::rtf), "text/rtf"},
            {QLatin1String(pasteboardType::concealed), "x-kde-passwordManagerHint"}};
        TestSource::Contents contents;
        for (const QString &type : types) {
            const auto found = targets.find(type);
            contents.push_back({found != targets.end() ? found->second : type.toLatin1(), {.bytes = text.toUtf8()}});
        }
        own().own(contents);
    }
    void clear() override { m_owner->clear(); }
    void endOwner() override {
        TestPaster paster;
        const int before = paster.notices();
        m_owner.reset();
        // Nobody, and then the keeper.
        static_cast<void>(waitUntil([&] { return paster.notices() >= before + 2 && paster.isOwned(); }));
    }
    void claimWithoutAnswer() override { own().own({}); }
    void claimTextWithoutContents() override { own().own({{"text/plain;charset=utf-8", SourceAnswer::silent()}}); }
    bool waitForCount(int count) override {
        return waitUntil([&] { return m_pasteboard->changeCount() >= count; });
    }
    void settle() override {
        // What was sent until now has been heard of when a later question is answered; what is asked here is only that
        // nothing more comes.
        static_cast<void>(waitUntil(
            [count = m_pasteboard->changeCount(), this] { return m_pasteboard->changeCount() != count; }, 200));
    }

private:
    TestSource &own() {
        // The one before lives on without the clipboard: that a program ends is a matter of its own.
        m_previous = std::exchange(m_owner, std::make_unique<TestSource>());
        return *m_owner;
    }

    std::unique_ptr<WaylandPasteboard> m_pasteboard;
    std::unique_ptr<TestSource> m_owner;
    std::unique_ptr<TestSource> m_previous;
};

INSTANTIATE_TEST_SUITE_P(wayland, PasteboardContract,
                         testing::Values(PasteboardWorldMaker{
                             "wayland",
                             []() -> std::unique_ptr<PasteboardWorld> { return std::make_unique<WaylandWorld>(); }}),
                         [](const auto &made) { return std::string(made.param.name); });

} // namespace
} // namespace tavrine

#include "adapters/x11/X11PasteboardFixture.h"
#include "contracts/PasteboardContract.h"

namespace tavrine {
namespace {

class X11World final : public PasteboardWorld {
public:
    X11World() {
        TestOwner owner;
        owner.own({});
        owner.clear();
        m_pasteboard = std::make_unique<X11Pasteboard>(shortLimits());
    }
    Pasteboard &pasteboard() override { return *m_pasteboard; }
    void copyText(const QString &text) override { own().ownText(text.toUtf8()); }
    void copyImage(const QImage &image, const std::optional<QString> &text) override {
        TestOwner::Contents contents{{"image/png", {.bytes = pngOf(image)}}};
        if (text)
            contents.push_back({"UTF8_STRING", {.bytes = text->toUtf8()}});
        own().own(contents);
    }
    void copyTyped(const QStringList &types, const QString &text) override {
        const std::map<QString, QByteArray> targets{
            {QLatin1String(pasteboardType::string), "UTF8_STRING"},
            {QLatin1String(pasteboardType::html), "text/html"},
            {QLatin1String(pasteboardType::rtf), "text/rtf"},
            {QLatin1String(pasteboardType::concealed), "x-kde-passwordManagerHint"}};
        TestOwner::Contents contents;
        for (const QString &type : types) {
            const auto found = targets.find(type);
            contents.push_back({found != targets.end() ? found->second : type.toLatin1(), {.bytes = text.toUtf8()}});
        }
        own().own(contents);
    }
    void clear() override { m_owner->clear(); }
    void endOwner() override {
        TestRequestor requestor;
        const xcb_window_t before = requestor.owner();
        m_owner.reset();
        // Nobody, and then the keeper.
        static_cast<void>(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
    }
    void claimWithoutAnswer() override { own().own({}, Answer::silent()); }
    void claimTextWithoutContents() override { own().own({{"UTF8_STRING", Answer::silent()}}); }
    bool waitForCount(int count) override {
        return waitUntil([&] { return m_pasteboard->changeCount() >= count; });
    }
    void settle() override {
        // A copy that another pasteboard has seen was seen by this one too, or will be by the time it is needed; what
        // is asked here is only that nothing more comes.
        static_cast<void>(waitUntil(
            [count = m_pasteboard->changeCount(), this] { return m_pasteboard->changeCount() != count; }, 200));
    }

private:
    TestOwner &own() {
        // The one before lives on without the clipboard: that a program ends is a matter of its own.
        m_previous = std::exchange(m_owner, std::make_unique<TestOwner>());
        return *m_owner;
    }

    std::unique_ptr<X11Pasteboard> m_pasteboard;
    std::unique_ptr<TestOwner> m_owner;
    std::unique_ptr<TestOwner> m_previous;
};

INSTANTIATE_TEST_SUITE_P(x11, PasteboardContract,
                         testing::Values(PasteboardWorldMaker{
                             "x11", []() -> std::unique_ptr<PasteboardWorld> { return std::make_unique<X11World>(); }}),
                         [](const auto &made) { return std::string(made.param.name); });

} // namespace
} // namespace tavrine

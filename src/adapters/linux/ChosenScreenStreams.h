#pragma once

#include "ports/ScreenStream.h"

namespace tavrine {

/// The streams of a desktop that shows its screen now in one way and now in another: each question goes to those that
/// are right at its moment. Main thread.
class ChosenScreenStreams final : public ScreenStreams {
public:
    using Choose = std::function<ScreenStreams &()>;
    explicit ChosenScreenStreams(Choose choose) : m_choose(std::move(choose)) {}

    [[nodiscard]] bool tellsWindows() const override { return m_choose().tellsWindows(); }
    void getShareableContent(ContentAnswer answer) override { m_choose().getShareableContent(std::move(answer)); }
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override {
        return m_choose().makeStream(filter, configuration, std::move(handlers));
    }

private:
    const Choose m_choose;
};

} // namespace tavrine

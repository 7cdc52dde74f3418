#pragma once

#include "base/MadeOnce.h"
#include "shell/tools/Tool.h"

namespace tavrine {

class ScreenRecorder;
class Shell;
class TakenCorner;

/// Recordings of the screen. What an earlier run has left of them, it shows a while after the launch, or after it was
/// switched on.
class ScreenRecorderTool final : public Tool {
public:
    static constexpr Seconds untilLeftoversAreShown{2.0}; ///< the person sees the desktop first

    ScreenRecorderTool(Shell &shell, TakenCorner &corner);
    ~ScreenRecorderTool() override;

    void launch(bool isOn) override;
    void setOn(bool isOn) override;
    void open(Trigger trigger) override; ///< asks for the permission itself

    /// The same for the menu.
    void startScreenRecording();

    /// Null until the first use.
    [[nodiscard]] ScreenRecorder *recorderIfMade() const { return m_recorder.ifMade(); }

private:
    void showLeftovers();
    [[nodiscard]] ScreenRecorder &recorder();
    [[nodiscard]] std::unique_ptr<ScreenRecorder> makeRecorder();

    Shell &m_shell;
    TakenCorner &m_corner;
    MadeOnce<ScreenRecorder> m_recorder;
    bool m_hasLooked = false; ///< for leftovers
    std::shared_ptr<int> m_alive = std::make_shared<int>();
};

} // namespace tavrine

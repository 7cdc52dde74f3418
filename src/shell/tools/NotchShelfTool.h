#pragma once

#include "shell/tools/Tool.h"

#include <QRect>

#include <memory>

namespace tavrine {

class NotchViewModel;
class NotchWindowController;
class Shell;

/// The shelf under the upper edge of the screen. It and all that it watches are there while its switch is on, and what
/// it holds goes with it.
class NotchShelfTool final : public Tool {
public:
    explicit NotchShelfTool(Shell &shell);
    ~NotchShelfTool() override;

    void launch(bool isOn) override;
    void setOn(bool isOn) override;

    /// Opens what is held for a person without a mouse; says so where nothing is held. For a shelf that is on.
    void openWithKeyboard();

    [[nodiscard]] NotchWindowController *notchController() const { return m_notchController.get(); } ///< null while off

private:
    void close();
    [[nodiscard]] QRect bandOnScreen() const;

    Shell &m_shell;
    std::unique_ptr<NotchWindowController> m_notchController;
};

} // namespace tavrine

#pragma once

#include "shell/tools/Tool.h"

class QWidget;

namespace tavrine {

class Shell;

/// The clipboard history and its two panels.
class ClipboardTool final : public Tool {
public:
    explicit ClipboardTool(Shell &shell) : m_shell(shell) {}

    void launch(bool isOn) override;
    void setOn(bool isOn) override;
    void open(Trigger trigger) override; ///< toggles the panel that the person chose

    // What stands in the panels, made with their windows.
    [[nodiscard]] QWidget *makeClassicView();
    [[nodiscard]] QWidget *makeSearchView();

private:
    void orderOutAllWindows();

    Shell &m_shell;
};

} // namespace tavrine

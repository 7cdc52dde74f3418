#pragma once

#include "base/MadeOnce.h"
#include "shell/tools/Tool.h"
#include "utilities/cleaner/KeyboardCleanerManager.h"

namespace tavrine {

class Shell;

/// The keyboard cleaner. Its switch going off frees the keyboard.
class CleaningModeTool final : public Tool {
public:
    explicit CleaningModeTool(Shell &shell) : m_shell(shell) {}

    void setOn(bool isOn) override;

    [[nodiscard]] KeyboardCleanerManager &manager();

private:
    Shell &m_shell;
    MadeOnce<KeyboardCleanerManager> m_manager;
};

} // namespace tavrine

#pragma once

#include "base/MadeOnce.h"
#include "shell/StatusDisplay.h"
#include "shell/tools/Tool.h"
#include "utilities/awake/KeepAwakeManager.h"

namespace tavrine {

class KeepAwakeControlView;
class Shell;

/// Keeping the machine awake: its manager, made when the switch is first on, and its card in the menu.
class KeepAwakeTool final : public QObject, public Tool {
    Q_OBJECT

public:
    explicit KeepAwakeTool(Shell &shell);
    ~KeepAwakeTool() override;

    void launch(bool isOn) override;
    void setOn(bool isOn) override;

    [[nodiscard]] KeepAwakeManager &manager();
    /// What the tray item tells of it.
    [[nodiscard]] KeepAwakeState state() const;

    /// The panel of the modes is closed whenever the menu opens.
    void menuWillOpen();
    /// The card. `beforeAlert` is called before it asks the person something: a menu would stand in the way.
    [[nodiscard]] KeepAwakeControlView *makeControlView(std::function<void()> beforeAlert);

Q_SIGNALS:
    void stateChanged();
    /// The card has another height.
    void showAdvancedPanelChanged(bool isShown);

private:
    Shell &m_shell;
    MadeOnce<KeepAwakeManager> m_manager;
};

} // namespace tavrine

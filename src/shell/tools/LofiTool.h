#pragma once

#include "base/MadeOnce.h"
#include "base/SerialQueue.h"
#include "shell/tools/Tool.h"

#include <functional>

class QWidget;

namespace tavrine {

class LofiManager;
class LofiPlayerModel;
class Shell;

/// The background music, made when something of it is first shown. No process of it runs before a play.
class LofiTool final : public Tool {
public:
    explicit LofiTool(Shell &shell);
    ~LofiTool() override;

    void setOn(bool isOn) override;

    /// The card among the quick actions. `beforeLeaving` is called before it opens another window: a menu would stand
    /// in the way.
    [[nodiscard]] QWidget *makeMiniPlayer(std::function<void()> beforeLeaving);
    [[nodiscard]] QWidget *makeSettingsView(); ///< the page of the settings
    [[nodiscard]] LofiManager &manager();

    /// What all of these show.
    [[nodiscard]] std::unique_ptr<LofiPlayerModel> makeModel(std::function<void()> beforeLeaving = {});

private:
    Shell &m_shell;
    SerialQueue m_fileQueue{QStringLiteral("com.tavrine.lofi")};
    MadeOnce<LofiManager> m_manager;
};

} // namespace tavrine

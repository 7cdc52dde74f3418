#pragma once

#include "base/MadeOnce.h"
#include "base/SerialQueue.h"
#include "shell/tools/Tool.h"

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

    [[nodiscard]] QWidget *makeMiniPlayer();   ///< the card among the quick actions
    [[nodiscard]] QWidget *makeSettingsView(); ///< the page of the settings
    [[nodiscard]] LofiManager &manager();

private:
    [[nodiscard]] std::unique_ptr<LofiPlayerModel> makeModel();

    Shell &m_shell;
    SerialQueue m_fileQueue{QStringLiteral("com.tavrine.lofi")};
    MadeOnce<LofiManager> m_manager;
};

} // namespace tavrine

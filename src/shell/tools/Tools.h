#pragma once

#include "base/MadeOnce.h"
#include "panels/TakenCorner.h"
#include "shell/FeatureFlags.h"
#include "shell/tools/CleaningModeTool.h"
#include "shell/tools/ClipboardTool.h"
#include "shell/tools/EditorTool.h"
#include "shell/tools/EmojiPickerTool.h"
#include "shell/tools/KeepAwakeTool.h"
#include "shell/tools/LofiTool.h"
#include "shell/tools/NetworkSpeedTool.h"
#include "shell/tools/NotchShelfTool.h"
#include "shell/tools/ScreenRecorderTool.h"
#include "shell/tools/SnippingTool.h"

#include <array>

namespace tavrine {

class ColorPickerManager;

/// The one place where the tools are made. AppDelegate owns it, the shell outlives it; main thread.
class Tools {
public:
    explicit Tools(Shell &shell);
    ~Tools();
    Tools(const Tools &) = delete;
    Tools &operator=(const Tools &) = delete;

    /// The tool behind a switch.
    [[nodiscard]] Tool *&operator[](Feature feature) { return m_byFeature[static_cast<std::size_t>(feature)]; }

    // For what only one of them can do.
    [[nodiscard]] EditorTool &editor() { return m_editor; }
    [[nodiscard]] SnippingTool &snipping() { return m_snipping; }
    [[nodiscard]] ClipboardTool &clipboard() { return m_clipboard; }
    [[nodiscard]] CleaningModeTool &cleaningMode() { return m_cleaningMode; }
    [[nodiscard]] EmojiPickerTool &emojiPicker() { return m_emojiPicker; }
    [[nodiscard]] LofiTool &lofi() { return m_lofi; }
    [[nodiscard]] KeepAwakeTool &keepAwake() { return m_keepAwake; }
    [[nodiscard]] NetworkSpeedTool &networkSpeed() { return m_networkSpeed; }
    [[nodiscard]] NotchShelfTool &notchShelf() { return m_notchShelf; }
    [[nodiscard]] ScreenRecorderTool &screenRecorder() { return m_screenRecorder; }

    /// Has no switch of its own.
    [[nodiscard]] ColorPickerManager &colorPicker();

private:
    Shell &m_shell;
    TakenCorner m_corner; ///< of captures and recordings
    EditorTool m_editor;
    SnippingTool m_snipping;
    ClipboardTool m_clipboard;
    CleaningModeTool m_cleaningMode;
    EmojiPickerTool m_emojiPicker;
    LofiTool m_lofi;
    KeepAwakeTool m_keepAwake;
    NetworkSpeedTool m_networkSpeed;
    NotchShelfTool m_notchShelf;
    ScreenRecorderTool m_screenRecorder;
    MadeOnce<ColorPickerManager> m_colorPicker;
    std::array<Tool *, featureTexts.size()> m_byFeature{};
};

} // namespace tavrine

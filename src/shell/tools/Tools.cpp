#include "shell/tools/Tools.h"

#include "capture/ColorPickerManager.h"
#include "shell/Shell.h"

namespace tavrine {

Tools::Tools(Shell &shell)
    : m_shell(shell), m_editor(shell), m_snipping(shell, m_editor, m_corner), m_clipboard(shell), m_cleaningMode(shell),
      m_emojiPicker(shell), m_lofi(shell), m_keepAwake(shell), m_networkSpeed(shell), m_notchShelf(shell),
      m_screenRecorder(shell, m_corner) {
    Tools &tools = *this;
    tools[Feature::snippingTool] = &m_snipping;
    tools[Feature::tavrineEditor] = &m_editor;
    tools[Feature::clipboardHistory] = &m_clipboard;
    tools[Feature::loFi] = &m_lofi;
    tools[Feature::cleaningMode] = &m_cleaningMode;
    tools[Feature::networkSpeed] = &m_networkSpeed;
    tools[Feature::notchShelf] = &m_notchShelf;
    tools[Feature::emojiPicker] = &m_emojiPicker;
    tools[Feature::keepAwake] = &m_keepAwake;
    tools[Feature::screenRecorder] = &m_screenRecorder;
}

Tools::~Tools() = default;

ColorPickerManager &Tools::colorPicker() {
    return m_colorPicker.get([this] {
        Desktop &desktop = m_shell.desktop();
        return std::make_unique<ColorPickerManager>(
            ColorPickerManager::Ports{desktop.time(), m_shell.defaults(), desktop.pasteboard(), desktop.colorSamplers(),
                                      m_snipping.clearedScreen()},
            [this](const QString &message, const QString &icon) { m_shell.showToast(message, icon); });
    });
}

} // namespace tavrine

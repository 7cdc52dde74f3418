#pragma once

#include "base/MadeOnce.h"
#include "shell/tools/Tool.h"

class QWidget;

namespace tavrine {

class EmojiPickerStore;
class EmojiPictures;
class Shell;

/// The emoji picker: its table, from the first opening on, and its panel.
class EmojiPickerTool final : public Tool {
public:
    explicit EmojiPickerTool(Shell &shell);
    ~EmojiPickerTool() override;

    void setOn(bool isOn) override;
    void open(Trigger trigger) override;

    [[nodiscard]] QWidget *makeView(); ///< what stands in the panel

private:
    Shell &m_shell;
    MadeOnce<EmojiPickerStore> m_store;
    MadeOnce<EmojiPictures> m_pictures;
};

} // namespace tavrine

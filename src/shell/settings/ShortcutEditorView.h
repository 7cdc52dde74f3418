#pragma once

#include "look/Draft.h"
#include "look/Tile.h"
#include "shell/ShortcutEditor.h"

namespace tavrine {

class KeyFieldView;
class UrlOpener;

namespace look {
class Button;
class SegmentedControl;
class Unfolding;
class WrappedText;
} // namespace look

/// The rows of a page in which the trigger of one tool is chosen: the kind, the key, what stands in the way, and the
/// control that saves. It draws its editor and decides nothing. Belongs to its page; main thread.
class ShortcutEditorView final : public look::Card, public look::Draft {
    Q_OBJECT

public:
    /// What the page says of its tool.
    struct Texts {
        QString typeNote;      ///< under "Shortcut Type"; empty for a tool that has only the hot key
        QString keyTitle;      ///< of the row with the key
        QString keyNote;       ///< under it; empty for the default key's
        QString doubleTapNote; ///< while the double tap is chosen
    };

    /// The opener outlives the view.
    ShortcutEditorView(std::unique_ptr<ShortcutEditor> editor, Texts texts, UrlOpener &urlOpener,
                       QWidget *parent = nullptr);
    ~ShortcutEditorView() override;

    [[nodiscard]] bool isUnsaved() const override { return m_editor->hasChanges(); }
    [[nodiscard]] Question question() const override;
    [[nodiscard]] bool saveDraft() override;

private:
    class SaveRow;
    class Banner;

    void addTypeRow();
    void addKeyRow();
    void addBanner(UrlOpener &urlOpener);
    void addSaveRow();
    void refresh();

    std::unique_ptr<ShortcutEditor> m_editor;
    Texts m_texts;
    look::SegmentedControl *m_type = nullptr;
    look::SettingsRow *m_keyRow = nullptr;
    KeyFieldView *m_key = nullptr;
    QWidget *m_tapNote = nullptr;
    Banner *m_banner = nullptr;
    look::Unfolding *m_bannerPlace = nullptr;
    SaveRow *m_save = nullptr; // says what it said last while it goes
    look::Unfolding *m_savePlace = nullptr;
};

} // namespace tavrine

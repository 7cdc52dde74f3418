#pragma once

#include "look/PanelSurface.h"

#include <memory>

namespace tavrine {

class ScreenRecordingPreviewModel;

namespace look {
class Label;
class Toggle;
} // namespace look

/// A finished recording, playing over and over, with its name, its folder and what can be done with it. Fills its
/// window; main thread.
class ScreenRecordingPreviewView final : public look::PanelSurface {
    Q_OBJECT

public:
    explicit ScreenRecordingPreviewView(std::shared_ptr<ScreenRecordingPreviewModel> model);

private:
    class FolderLine;
    class Movie;
    class NameField;
    class Screen;

    [[nodiscard]] QWidget *makeHeader();
    [[nodiscard]] QWidget *makeAudioRow();
    [[nodiscard]] QWidget *makeFolderRow();
    [[nodiscard]] QWidget *makeNameRow();
    [[nodiscard]] QWidget *makeButtons();
    void refresh();

    std::shared_ptr<ScreenRecordingPreviewModel> m_model;
    look::Label *m_facts = nullptr;
    look::Label *m_audio = nullptr;
    look::Toggle *m_mute = nullptr;
    Screen *m_screen = nullptr;
    FolderLine *m_folder = nullptr;
};

} // namespace tavrine

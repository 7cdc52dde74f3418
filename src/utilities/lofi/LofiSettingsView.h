#pragma once

#include <QWidget>

#include <memory>

class QVBoxLayout;

namespace tavrine {

class LofiPlayerModel;

/// The page of the music in the settings: what would play, and where other music comes from. Main thread; owned by its
/// window.
class LofiSettingsView final : public QWidget {
    Q_OBJECT

public:
    static constexpr auto title = "Lo-Fi Vibe";
    static constexpr auto subtitle = "Background lo-fi music to help you focus";

    explicit LofiSettingsView(std::unique_ptr<LofiPlayerModel> model);
    ~LofiSettingsView() override;

private:
    class TrackRow;

    void addButtons(QVBoxLayout &column);

    std::unique_ptr<LofiPlayerModel> m_model;
};

} // namespace tavrine

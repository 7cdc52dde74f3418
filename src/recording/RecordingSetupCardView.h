#pragma once

#include <QWidget>

#include <memory>

namespace tavrine {

class ScreenRecorderSelectionModel;

namespace look {
class SegmentedControl;
class Toggle;
} // namespace look

/// The card on which a recording is set up once its area is chosen. A child of the overlay; main thread.
class RecordingSetupCardView final : public QWidget {
    Q_OBJECT

public:
    explicit RecordingSetupCardView(std::shared_ptr<ScreenRecorderSelectionModel> model, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override; ///< a press on the card is none on the overlay

private:
    [[nodiscard]] QWidget *makeHeader();
    [[nodiscard]] look::Toggle *addSwitch(const char *symbol, const char *title);
    void refresh();

    std::shared_ptr<ScreenRecorderSelectionModel> m_model;
    look::Toggle *m_mic = nullptr;
    look::Toggle *m_system = nullptr;
    look::SegmentedControl *m_delay = nullptr;
};

} // namespace tavrine

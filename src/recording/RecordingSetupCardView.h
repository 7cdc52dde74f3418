#pragma once

#include <QWidget>

#include <memory>

class QBoxLayout;

namespace tavrine {

class ScreenRecorderSelectionModel;

namespace look {
class Label;
class SegmentedControl;
class Toggle;
} // namespace look

/// The card on which a recording is set up once its area is chosen. A child of the overlay; main thread.
class RecordingSetupCardView final : public QWidget {
    Q_OBJECT

public:
    explicit RecordingSetupCardView(std::shared_ptr<ScreenRecorderSelectionModel> model, QWidget *parent = nullptr);

    /// Takes as much height as it likes where that is, and puts things beside one another where it is not.
    void fitInto(int height);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override; ///< a press on the card is none on the overlay

private:
    [[nodiscard]] QWidget *makeHeader();
    [[nodiscard]] QWidget *makeAudioTitle();
    [[nodiscard]] look::Toggle *addSwitch(const char *symbol, const char *title);
    void setLow(bool isLow);
    void refresh();

    std::shared_ptr<ScreenRecorderSelectionModel> m_model;
    int m_room = 0; ///< for which it was laid out
    QBoxLayout *m_switches = nullptr;
    look::Label *m_hint = nullptr;      ///< below the switches
    look::Label *m_hintAbove = nullptr; ///< the same, on a low card
    look::Toggle *m_mic = nullptr;
    look::Toggle *m_system = nullptr;
    look::SegmentedControl *m_delay = nullptr;
};

} // namespace tavrine

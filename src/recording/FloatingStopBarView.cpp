#include "recording/FloatingStopBarView.h"

#include "base/DesktopWords.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "recording/RecordingTexts.h"
#include "recording/ScreenRecorder.h"

#include <QHBoxLayout>
#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr int barHeight = 44;
constexpr Seconds pulse{0.8};
constexpr double faintest = 0.3;
constexpr int shades = 12; ///< of the dot on its way: more would only cost repaints
constexpr double dotSide = 11;

QFont clockFont() {
    return look::fontFor(look::TextRole::heading);
}

} // namespace

/// Swells and fades while something is recorded.
class FloatingStopBarView::Dot final : public QWidget {
public:
    Dot() { setFixedSize(16, 16); }

protected:
    void showEvent(QShowEvent *event) override {
        QWidget::showEvent(event);
        m_motion.run([this](Seconds sinceLastFrame) {
            m_time += sinceLastFrame.count();
            const double turn = std::fmod(m_time / pulse.count(), 2.0); // there and back
            const double part = look::easeInOut.at(turn < 1 ? turn : 2 - turn);
            if (const int shade = int(std::lround(part * shades)); std::exchange(m_shade, shade) != shade)
                update();
            return isVisible();
        });
    }
    void hideEvent(QHideEvent *event) override {
        m_motion.stop();
        QWidget::hideEvent(event);
    }
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        QColor red(0xFF, 0x3B, 0x30);
        red.setAlphaF(float(1 - (1 - faintest) * m_shade / shades));
        const QRectF body((width() - dotSide) / 2, (height() - dotSide) / 2, dotSide, dotSide);
        look::fillRounded(painter, body, dotSide / 2, red);
    }

private:
    look::Motion m_motion;
    double m_time = 0;
    int m_shade = 0;
};

/// The time, each digit in a place of its own, so that it does not dance.
class FloatingStopBarView::Clock final : public QWidget {
public:
    void setText(const QString &text) {
        if (text == m_text)
            return;
        const bool isLonger = text.size() != m_text.size();
        m_text = text;
        setAccessibleName(inDesktopWords(QStringLiteral("Recording time ") + text));
        if (isLonger)
            updateGeometry();
        update();
    }
    [[nodiscard]] QSize sizeHint() const override {
        double wide = 0;
        for (const QChar character : m_text)
            wide += widthOf(character);
        return {int(std::ceil(wide)), 20};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        double left = 0;
        for (const QChar character : m_text) {
            look::paintLine(painter, QRectF(left, 0, widthOf(character) + 1, height()), character,
                            look::TextRole::heading, theme.text, Qt::AlignHCenter);
            left += widthOf(character);
        }
    }

private:
    [[nodiscard]] static double widthOf(QChar character) {
        return QFontMetricsF(clockFont()).horizontalAdvance(character.isDigit() ? QLatin1Char('0') : character);
    }

    QString m_text;
};

/// Says that nothing is heard.
class FloatingStopBarView::SilenceHint final : public QWidget {
public:
    SilenceHint() {
        setAccessibleName(words());
        setFixedHeight(20);
        hide();
    }
    [[nodiscard]] QSize sizeHint() const override {
        return {int(std::ceil(look::symbolsize::medium + look::space::tiny + 2 +
                              look::lineWidth(words(), look::TextRole::callout))) +
                    1,
                20};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::paintSymbol(painter, QRectF(0, 0, look::symbolsize::medium, height()), QStringLiteral("mic.slash.fill"),
                          look::symbolsize::medium, theme.warning);
        const double left = look::symbolsize::medium + look::space::tiny + 2;
        look::paintLine(painter, QRectF(left, 0, width() - left, height()), words(), look::TextRole::callout,
                        theme.text);
    }

private:
    [[nodiscard]] static QString words() { return inDesktopWords(QStringLiteral("No sound from the microphone")); }
};

FloatingStopBarView::FloatingStopBarView(ScreenRecorder &recorder)
    : PanelSurface(barHeight / 2.0), m_recorder(recorder), m_clock(new Clock), m_hint(new SilenceHint) {
    setAccessibleName(inDesktopWords(QStringLiteral("Recording")));
    setFixedHeight(barHeight);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(look::space::large - 2, 0, look::space::small - 1, 0);
    row->setSpacing(look::space::small);
    row->addWidget(new Dot);
    row->addWidget(m_clock);
    row->addWidget(m_hint);
    row->addStretch();
    addButtons();
    connect(&recorder, &ScreenRecorder::recordingChanged, this, &FloatingStopBarView::refresh);
    refresh();
}

void FloatingStopBarView::addButtons() {
    const auto add = [this](look::Button *button, const char *name, void (ScreenRecorder::*press)()) {
        button->setAccessibleName(inDesktopWords(QLatin1String(name)));
        connect(button, &QAbstractButton::clicked, &m_recorder, press);
        layout()->addWidget(button);
    };
    auto *restart =
        new look::Button(QStringLiteral("arrow.counterclockwise"), QStringLiteral("Restart recording from 00:00"));
    add(restart, "Restart", &ScreenRecorder::restartRecording);
    auto *cancel = new look::Button(QStringLiteral("xmark"), QStringLiteral("Discard recording without saving"));
    add(cancel, "Cancel", &ScreenRecorder::cancelRecording);
    auto *stop = new look::Button(QStringLiteral("Stop"), look::ButtonStyle::prominent);
    stop->setSymbol(QStringLiteral("square.fill"));
    add(stop, "Stop", &ScreenRecorder::stopRecording);
}

QSize FloatingStopBarView::sizeHint() const {
    return {layout()->sizeHint().width() + look::space::large, barHeight};
}

void FloatingStopBarView::refresh() {
    const QSize before = sizeHint();
    m_clock->setText(clockText(m_recorder.recordingDuration()));
    m_hint->setVisible(m_recorder.isMicrophoneSilent());
    if (const QSize now = sizeHint(); now != before)
        Q_EMIT fittingSizeChanged(now);
}

} // namespace tavrine

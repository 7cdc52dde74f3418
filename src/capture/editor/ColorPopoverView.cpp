#include "capture/editor/ColorPopoverView.h"

#include "base/DesktopWords.h"
#include "capture/editor/EditorModel.h"
#include "look/Control.h"
#include "look/FittingWindow.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QPainter>

#include <algorithm>
#include <array>

namespace tavrine {
namespace {

constexpr int cellSide = 36;
constexpr int columns = 4;
constexpr double ring = 2;
constexpr double ringGap = 2;
constexpr std::array presetNames{"Red", "Orange", "Yellow", "Green", "Cyan", "Blue", "Purple", "White"};

/// One colour to choose.
class Swatch final : public look::Control {
public:
    Swatch(const EditorModel &model, const QColor &color, const QString &name, QWidget *parent)
        : Control(parent), m_model(model), m_color(color) {
        setFixedSize(cellSide, cellSide);
        setToolTip(inDesktopWords(name));
        connect(&model, &EditorModel::selectedColorChanged, this, qOverload<>(&QWidget::update));
    }

protected:
    void paint(QPainter &painter) override {
        paintSwatch(painter, QRectF(rect()).adjusted(3, 3, -3, -3), m_color, m_model.selectedColor() == m_color, this);
    }
    [[nodiscard]] qreal cornerRadius() const override { return cellSide / 2.0; }

private:
    const EditorModel &m_model;
    QColor m_color;
};

/// The well: all hues round, and in the middle what was chosen from them.
class CustomWell final : public look::Control {
public:
    CustomWell(const EditorModel &model, QWidget *parent) : Control(parent), m_model(model) {
        setText(inDesktopWords(QStringLiteral("Custom")));
        setFixedHeight(cellSide);
        connect(&model, &EditorModel::selectedColorChanged, this, qOverload<>(&QWidget::update));
    }

protected:
    void paint(QPainter &painter) override {
        look::fillRounded(painter, rect(), look::radius::control, ground(Qt::transparent));
        const QRectF disc(7, (height() - 22) / 2.0, 22, 22);
        QConicalGradient hues(disc.center(), 90);
        for (int i = 0; i <= 6; ++i)
            hues.setColorAt(i / 6.0, QColor::fromHsvF(float(i % 6) / 6.0F, 0.85F, 1.0F));
        painter.setPen(Qt::NoPen);
        painter.setBrush(hues);
        painter.drawEllipse(disc);
        if (isCustom()) {
            painter.setBrush(m_model.selectedColor());
            painter.setPen(QPen(Qt::white, 2));
            painter.drawEllipse(disc.adjusted(4, 4, -4, -4));
        }
        look::paintLine(painter, QRectF(disc.right() + 10, 0, width() - disc.right() - 14, height()), text(),
                        look::TextRole::body, theme().text);
    }

private:
    [[nodiscard]] bool isCustom() const {
        const auto &presets = EditorModel::colorPresets();
        return std::find(presets.begin(), presets.end(), m_model.selectedColor()) == presets.end();
    }

    const EditorModel &m_model;
};

} // namespace

void paintSwatch(QPainter &painter, const QRectF &rect, const QColor &color, bool isChosen, const QWidget *widget) {
    const look::Theme &theme = look::themeOf(widget);
    QRectF disc = rect;
    if (isChosen) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme.accent, ring));
        painter.drawEllipse(rect.adjusted(ring / 2, ring / 2, -ring / 2, -ring / 2));
    }
    const double inset = ring + ringGap;
    disc.adjust(inset, inset, -inset, -inset);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(disc);
    // White on a light ground, and black on a dark one, have an edge too.
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme.isDark ? QColor(255, 255, 255, 60) : QColor(0, 0, 0, 50), 1));
    painter.drawEllipse(disc.adjusted(0.5, 0.5, -0.5, -0.5));
}

ColorPopoverView::ColorPopoverView(EditorModel &model, QWidget *anchor)
    : PopoverPanel(anchor), m_model(model), m_window(anchor->window()) {
    auto *content = new QWidget;
    auto *grid = new QGridLayout(content);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    const auto &presets = EditorModel::colorPresets();
    for (size_t i = 0; i < presets.size(); ++i) {
        auto *swatch = new Swatch(model, presets[i], QLatin1String(presetNames[i]), content);
        connect(swatch, &QAbstractButton::clicked, this, [this, color = presets[i]] { choose(color); });
        grid->addWidget(swatch, int(i) / columns, int(i) % columns);
    }
    auto *custom = new CustomWell(model, content);
    connect(custom, &QAbstractButton::clicked, this, &ColorPopoverView::chooseCustom);
    grid->addWidget(custom, int(presets.size()) / columns, 0, 1, columns);
    setContent(content);
}

void ColorPopoverView::choose(const QColor &color) {
    m_model.setSelectedColor(color);
    close();
}

void ColorPopoverView::chooseCustom() {
    auto *dialog = m_window->findChild<QColorDialog *>();
    if (!dialog) {
        dialog = new QColorDialog(m_model.selectedColor(), m_window);
        dialog->setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::NoButtons |
                           QColorDialog::ShowAlphaChannel);
        dialog->setWindowTitle(inDesktopWords(QStringLiteral("Annotation color")));
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        fitToScreen(*dialog);
        connect(dialog, &QColorDialog::currentColorChanged, &m_model, &EditorModel::setSelectedColor);
        // The window may go on with another picture, for which a new dialog is made.
        connect(&m_model, &QObject::destroyed, dialog, [dialog] { delete dialog; });
    }
    close();
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace tavrine

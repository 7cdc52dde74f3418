#include "capture/editor/EditorToolsView.h"

#include "base/DesktopWords.h"
#include "capture/editor/ColorPopoverView.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/EditorModel.h"
#include "capture/editor/EditorStageView.h"
#include "capture/editor/ToolButton.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SoftChange.h"

#include <QGridLayout>
#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr int swatchSide = 26;

/// The present colour, and the way to others.
class ColorButton final : public look::Control {
public:
    ColorButton(EditorModel &model, QWidget *parent) : Control(parent), m_model(model) {
        setText(inDesktopWords(QStringLiteral("Color")));
        setToolTip(inDesktopWords(QStringLiteral("Annotation color")));
        setAccessibleName(toolTip());
        setFixedSize(swatchSide + int(std::ceil(look::lineWidth(text(), look::TextRole::body))) + 22, 34);
        connect(&model, &EditorModel::selectedColorChanged, this, qOverload<>(&QWidget::update));
        connect(this, &QAbstractButton::clicked, this, [this] {
            auto *popover = new ColorPopoverView(m_model, this);
            popover->setAttribute(Qt::WA_DeleteOnClose);
            popover->open();
        });
    }

protected:
    void paint(QPainter &painter) override {
        look::fillRounded(painter, rect(), cornerRadius(), ground(Qt::transparent));
        paintSwatch(painter, QRectF(5, (height() - swatchSide) / 2.0, swatchSide, swatchSide), m_model.selectedColor(),
                    false, this);
        look::paintLine(painter, QRectF(swatchSide + 10, 0, width() - swatchSide - 10, height()), text(),
                        look::TextRole::body, theme().text);
    }

private:
    EditorModel &m_model;
};

QHBoxLayout *rowIn(QWidget *widget) {
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(look::space::hair);
    return row;
}

look::Button *zoomButton(const char *symbol, const char *help, const QString &key, QWidget *parent) {
    auto *button =
        new look::Button(QLatin1String(symbol), QStringLiteral("%1  (%2)").arg(QLatin1String(help), key), parent);
    button->setAccessibleName(inDesktopWords(QLatin1String(help)));
    return button;
}

} // namespace

EditorToolsView::EditorToolsView(EditorModel &model, EditorStageView &stage, QWidget *parent)
    : QWidget(parent), m_model(model), m_stage(stage) {
    makeTools();
    m_stepper = makeStepper(); // not beside the tools: it comes and goes, and they stay under the pointer
    QSizePolicy policy = m_stepper->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_stepper->setSizePolicy(policy);
    m_zoom = makeZoom();
    new QGridLayout(this);
    arrange(true);
    connect(&model, &EditorModel::currentToolChanged, this, &EditorToolsView::showTool);
    connect(&model, &EditorModel::lineThicknessChanged, this, &EditorToolsView::showTool);
    connect(&model, &EditorModel::cropChanged, this, &EditorToolsView::showTool);
    connect(&model, &EditorModel::nextStampNumberChanged, this, &EditorToolsView::showStampNumber);
    connect(&stage, &EditorStageView::zoomChanged, this, &EditorToolsView::showZoom);
    showTool();
    showStampNumber();
    showZoom();
}

void EditorToolsView::arrange(bool inOneRow) {
    auto *grid = static_cast<QGridLayout *>(layout());
    for (QWidget *part : {m_stepper, m_tools, m_zoom})
        grid->removeWidget(part);
    grid->setContentsMargins(look::space::medium, 1, look::space::medium, 0);
    grid->setVerticalSpacing(0);
    const int row = inOneRow ? 0 : 1;
    // The tools stand in the middle, whatever stands beside them.
    if (inOneRow)
        grid->addWidget(m_tools, 0, 1, Qt::AlignCenter);
    else
        grid->addWidget(m_tools, 0, 0, 1, 3, Qt::AlignCenter);
    grid->addWidget(m_stepper, row, 0, Qt::AlignLeft | Qt::AlignVCenter);
    grid->addWidget(m_zoom, row, 2, Qt::AlignRight | Qt::AlignVCenter);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);
    setFixedHeight(inOneRow ? barHeight : heightOfTwoRows);
}

int EditorToolsView::widthOfOneRow() const {
    const int beside = std::max(m_stepper->sizeHint().width(), m_zoom->sizeHint().width()) + layout()->spacing();
    return m_tools->sizeHint().width() + 2 * beside + 2 * look::space::medium;
}

QSize EditorToolsView::minimumSizeHint() const {
    const int below = m_stepper->sizeHint().width() + m_zoom->sizeHint().width() + layout()->spacing();
    return {std::max(m_tools->sizeHint().width(), below) + 2 * look::space::medium, height()};
}

void EditorToolsView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    const bool inOneRow = width() >= widthOfOneRow();
    if (inOneRow != (height() == barHeight))
        arrange(inOneRow);
}

void EditorToolsView::makeTools() {
    m_tools = new QWidget(this);
    auto *row = rowIn(m_tools);
    const Binding<DrawingTool> current{[this] { return m_model.currentTool(); },
                                       [this](DrawingTool tool) { m_model.setCurrentTool(tool); }};
    const Binding<AnnotationThickness> thickness{
        [this] { return m_model.lineThickness(); },
        [this](AnnotationThickness chosen) { m_model.setLineThickness(chosen); }};
    for (const DrawingToolEntry &entry : drawingTools) {
        auto *button = new ToolButton(entry.tool, current, thickness, m_tools);
        m_buttons.push_back(button);
        row->addWidget(button);
    }
    row->addSpacing(look::space::small);
    m_color = new ColorButton(m_model, m_tools);
    row->addWidget(m_color);
}

QWidget *EditorToolsView::makeStepper() {
    auto *stepper = new QWidget(this);
    m_decrease =
        new look::Button(QStringLiteral("minus.circle.fill"), QStringLiteral("Decrease stamp number"), stepper);
    m_number = new look::Label(QString(), look::TextRole::bodyStrong, look::Label::Tone::primary, stepper);
    m_number->setAlignment(Qt::AlignHCenter);
    auto *increase =
        new look::Button(QStringLiteral("plus.circle.fill"), QStringLiteral("Increase stamp number"), stepper);
    connect(m_decrease, &QAbstractButton::clicked, &m_model, &EditorModel::decreaseStampNumber);
    connect(increase, &QAbstractButton::clicked, &m_model, &EditorModel::increaseStampNumber);
    auto *row = rowIn(stepper);
    row->addWidget(m_decrease);
    row->addWidget(m_number);
    row->addWidget(increase);
    return stepper;
}

QWidget *EditorToolsView::makeZoom() {
    auto *zoom = new QWidget(this);
    auto *row = rowIn(zoom);
    auto *out = zoomButton("minus.magnifyingglass", "Zoom out", QStringLiteral("Ctrl+−"), zoom);
    m_percent = new look::Button(QString(), look::ButtonStyle::plain, zoom);
    m_percent->setButtonSize(look::ButtonSize::small);
    m_percent->setToolTip(QStringLiteral("Actual size  (Ctrl+1)"));
    auto *in = zoomButton("plus.magnifyingglass", "Zoom in", QStringLiteral("Ctrl++"), zoom);
    m_fit = zoomButton("arrow.up.left.and.arrow.down.right", "Zoom to fit", QStringLiteral("Ctrl+0"), zoom);
    connect(out, &QAbstractButton::clicked, &m_stage, &EditorStageView::zoomOut);
    connect(m_percent, &QAbstractButton::clicked, &m_stage, &EditorStageView::zoomToFullSize);
    connect(in, &QAbstractButton::clicked, &m_stage, &EditorStageView::zoomIn);
    connect(m_fit, &QAbstractButton::clicked, &m_stage, &EditorStageView::zoomToFit);
    for (look::Button *button : {out, m_percent, in, m_fit})
        row->addWidget(button);
    return zoom;
}

void EditorToolsView::showTool() {
    for (ToolButton *button : m_buttons) {
        button->setEnabled(!m_model.isCropping());
        button->refresh();
    }
    m_color->setEnabled(!m_model.isCropping());
    m_stepper->setVisible(m_model.currentTool() == DrawingTool::numberStamp);
    m_stepper->setEnabled(!m_model.isCropping());
    showStampNumber();
}

void EditorToolsView::showStampNumber() {
    const int next = m_model.nextStampNumber();
    if (std::exchange(m_shownNumber, next) != next)
        look::changeSoftly(*m_number);
    m_number->setText(QStringLiteral("number %1").arg(m_shownNumber));
    m_number->setFixedWidth(m_number->sizeHint().width() + look::space::tiny);
    m_decrease->setEnabled(m_model.canDecreaseStampNumber() && !m_model.isCropping());
}

void EditorToolsView::showZoom() {
    m_percent->setText(QStringLiteral("%1 %").arg(std::max(1L, std::lround(m_stage.scale() * 100))));
    m_percent->setFixedWidth(62); // the buttons beside it stay where they are under the pointer
    m_fit->setEnabled(!m_stage.isFit());
}

void EditorToolsView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const look::Theme &theme = look::themeOf(this);
    painter.fillRect(rect(), theme.surface);
    look::paintSeparator(painter, QRectF(0, 0, width(), 1), theme);
}

} // namespace tavrine

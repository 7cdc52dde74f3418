#include "capture/editor/EditorView.h"

#include "base/DesktopWords.h"
#include "capture/editor/CropOverlayView.h"
#include "capture/editor/DrawView.h"
#include "capture/editor/DrawingTool.h"
#include "capture/editor/EditorStageView.h"
#include "capture/editor/EditorToolbarView.h"
#include "capture/editor/EditorToolsView.h"
#include "look/ApplicationIcon.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/PillView.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr int floatingGap = 14; // between what floats and the edge of the picture's place

/// What is under way, over the darkened picture.
class ScanningOverlay final : public QWidget {
public:
    ScanningOverlay(const QString &text, QWidget *parent)
        : QWidget(parent), m_spinner(new look::Spinner(this)),
          m_label(new look::Label(text, look::TextRole::bodyStrong, look::Label::Tone::primary, this)) {
        setAccessibleName(text);
    }
    void setText(const QString &text) {
        m_label->setText(text);
        place();
    }

protected:
    void resizeEvent(QResizeEvent *) override { place(); }
    void mousePressEvent(QMouseEvent *) override {} // nothing below is to be clicked
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        painter.fillRect(rect(), QColor(0, 0, 0, 110));
        const look::Theme &theme = look::themeOf(this);
        look::fillRounded(painter, m_plate, look::radius::card, theme.elevated);
        look::strokeHairline(painter, m_plate, look::radius::card, theme.outline);
    }

private:
    void place() {
        const QSize words = m_label->sizeHint();
        QRect plate(0, 0, words.width() + 20 + 3 * look::space::large, 52);
        plate.moveCenter(rect().center());
        m_plate = plate;
        m_spinner->setGeometry(plate.left() + look::space::large, plate.center().y() - 9, 20, 20);
        m_label->setGeometry(plate.left() + 20 + 2 * look::space::large - 4, plate.top(), words.width() + 4,
                             plate.height());
        update();
    }

    look::Spinner *m_spinner;
    look::Label *m_label;
    QRectF m_plate;
};

/// The darkened editor behind a sheet.
class SheetGround final : public QWidget {
public:
    SheetGround(QWidget *sheet, QWidget *parent) : QWidget(parent), m_sheet(sheet) {
        sheet->setParent(this);
        sheet->installEventFilter(this);
        setGeometry(parent->rect());
        place();
    }
    void place() {
        const QSize most = size() - QSize(2 * look::space::huge, 2 * look::space::huge);
        QRect rect(QPoint(), m_sheet->sizeHint().expandedTo(m_sheet->minimumSize()).boundedTo(most));
        rect.moveCenter(this->rect().center());
        m_sheet->setGeometry(rect);
    }

protected:
    /// The keyboard stays with the sheet: what is behind it takes no keys.
    bool focusNextPrevChild(bool next) override {
        QWidget *const from = window()->focusWidget();
        for (QWidget *to = from; to && (to = next ? to->nextInFocusChain() : to->previousInFocusChain()) != from;) {
            if (isAncestorOf(to) && (to->focusPolicy() & Qt::TabFocus) && to->isVisible() && to->isEnabled()) {
                to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
                break;
            }
        }
        return true;
    }
    void resizeEvent(QResizeEvent *) override { place(); }
    void mousePressEvent(QMouseEvent *) override {}
    void wheelEvent(QWheelEvent *event) override { event->accept(); }
    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::LayoutRequest)
            place();
        return QWidget::eventFilter(object, event);
    }
    void paintEvent(QPaintEvent *) override { QPainter(this).fillRect(rect(), QColor(0, 0, 0, 120)); }

private:
    QWidget *m_sheet;
};

EditorModel::Actions actionsOf(EditorView &view, EditorView::Actions actions, const EditorView::Hooks &hooks) {
    const auto lent = [&view](const std::function<void(EditorView &)> &hook) -> std::function<void()> {
        if (!hook)
            return {};
        return [&view, hook] { hook(view); };
    };
    return {.openNewImage = std::move(actions.openNewImage),
            .close = std::move(actions.close),
            .extractText = lent(hooks.extractText),
            .scanQr = lent(hooks.scanQr)};
}

} // namespace

EditorView::EditorView(const QImage &image, const EditorModel::Ports &ports, Actions actions, const Hooks &hooks,
                       QWidget *parent)
    : QWidget(parent), m_model(image, ports, actionsOf(*this, std::move(actions), hooks)) {
    setWindowIcon(look::applicationIcon());
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(inDesktopWords(QStringLiteral("Tavrine Editor")));
    build();
    connect(&m_model, &EditorModel::imageChanged, this, [this] {
        clearOverlayLayer();
        m_stage->setImage(m_model.shownImage()); // the crop mode ends next, and with it comes a new canvas
    });
    connect(&m_model, &EditorModel::canvasReplaced, this, &EditorView::replaceCanvas);
    connect(&m_model, &EditorModel::cropChanged, this, &EditorView::showMode);
    connect(&m_model, &EditorModel::hasUnsavedChangesChanged, this, &EditorView::showPills);
    connect(&m_model, &EditorModel::saveFailureChanged, this, &EditorView::showSaveFailure);
    for (const auto change :
         {&EditorModel::currentToolChanged, &EditorModel::drawingsChanged, &EditorModel::selectedColorChanged,
          &EditorModel::lineThicknessChanged, &EditorModel::nextStampNumberChanged})
        connect(&m_model, change, this, &EditorView::updateCanvas);
    m_stage->setImage(m_model.shownImage());
    replaceCanvas();
    showPills();
    if (hooks.opened)
        hooks.opened(*this);
}

EditorView::~EditorView() = default;

void EditorView::build() {
    m_stage = new EditorStageView(this);
    m_toolbar = new EditorToolbarView(m_model, this);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_toolbar);
    column->addWidget(m_stage, 1);
    column->addWidget(new EditorToolsView(m_model, *m_stage, this));
    connect(m_toolbar, &EditorToolbarView::cropPressed, this, &EditorView::toggleCropping);
    connect(m_toolbar, &EditorToolbarView::undoPressed, &m_model, &EditorModel::undo);

    m_cropPill = new PillView(QStringLiteral("crop"), QStringLiteral("Drag selection box to crop"), this);
    auto *cancel = m_cropPill->addButton(QStringLiteral("Cancel"), look::ButtonStyle::plain);
    auto *apply =
        m_cropPill->addButton(QStringLiteral("Apply Crop"), look::ButtonStyle::prominent, QStringLiteral("checkmark"));
    cancel->setToolTip(QStringLiteral("Leave without cropping  (Esc)"));
    apply->setToolTip(QStringLiteral("Crop to the selection  (Return)"));
    connect(cancel, &QAbstractButton::clicked, &m_model, &EditorModel::cancelCrop);
    connect(apply, &QAbstractButton::clicked, &m_model, &EditorModel::applyCrop);
    m_unsavedPill = new PillView(QStringLiteral("pencil"), QStringLiteral("Unsaved changes"), this);
    auto *saveAndCopy = m_unsavedPill->addButton(QStringLiteral("Save & Copy"), look::ButtonStyle::prominent);
    connect(saveAndCopy, &QAbstractButton::clicked, &m_model, &EditorModel::saveAndCopy);
}

void EditorView::replaceCanvas() {
    if (m_model.isCropping()) {
        setFocus(); // the keyboard would go with the canvas
        auto *overlay = new CropOverlayView(m_model);
        m_stage->setCanvas(overlay, EditorStageView::Picture::byStage);
        overlay->setFocus();
        updateCanvas();
        return;
    }
    m_canvas = new DrawView;
    m_canvas->setPicture(m_stage->image());
    updateCanvas();
    m_stage->setCanvas(m_canvas, EditorStageView::Picture::byCanvas);
    m_canvas->setFocus();
}

void EditorView::updateCanvas() {
    if (m_model.isCropping())
        m_stage->setPicture(m_model.flattenedImage()); // what is cropped has the annotations in it
    if (!m_canvas)
        return;
    DrawingCanvas canvas;
    canvas.tool = {[this] { return m_model.currentTool(); },
                   [this](DrawingTool tool) { m_model.setCurrentTool(tool); }};
    canvas.drawings = {[this] { return m_model.drawings(); },
                       [this](std::vector<DrawingPath> drawings) { m_model.setDrawings(std::move(drawings)); }};
    canvas.selectedColor = m_model.selectedColor();
    canvas.lineWidth = lineWidthOf(m_model.lineThickness());
    canvas.nextStampNumber = {[this] { return m_model.nextStampNumber(); },
                              [this](int number) { m_model.setNextStampNumber(number); }};
    canvas.viewSize = m_stage->imageRect().size();
    canvas.imageSize = m_model.shownImage().deviceIndependentSize();
    m_canvas->updateCanvas(canvas);
}

void EditorView::toggleCropping() {
    if (m_canvas)
        m_canvas->commitActiveText(); // what was typed is kept
    m_model.toggleCropping();
}

void EditorView::showMode() {
    if (m_model.isCropping() == (m_canvas != nullptr))
        replaceCanvas();
    showPills();
}

void EditorView::showPills() {
    m_cropPill->setShown(m_model.isCropping());
    m_unsavedPill->setShown(m_model.hasUnsavedChanges());
    placeFloating();
}

void EditorView::showSaveFailure() {
    delete m_failurePill;
    if (m_model.saveFailure().isEmpty())
        return;
    m_failurePill = new PillView(QStringLiteral("exclamationmark.triangle.fill"), m_model.saveFailure(), this);
    m_failurePill->setShown(true);
    placeFloating();
}

void EditorView::placeFloating() {
    const QRect stage = m_stage->geometry();
    int bottom = stage.bottom() - floatingGap;
    for (PillView *pill : {m_cropPill, m_unsavedPill}) { // the second above the first while there are two
        const QSize size = pill->sizeHint().boundedTo(stage.size());
        pill->setGeometry(QRect(QPoint(stage.center().x() - size.width() / 2, bottom - size.height()), size));
        pill->raise();
        if (pill->isShown())
            bottom = pill->y();
    }
    if (m_failurePill) {
        const QSize size = m_failurePill->sizeHint().boundedTo(stage.size());
        m_failurePill->setGeometry(
            QRect(QPoint(stage.center().x() - size.width() / 2, stage.top() + floatingGap), size));
        m_failurePill->raise();
    }
    if (m_scanning) {
        m_scanning->setGeometry(stage);
        m_scanning->raise();
    }
    if (m_sheet) {
        m_sheet->setGeometry(rect());
        m_sheet->raise();
    }
}

void EditorView::resizeEvent(QResizeEvent *) {
    layout()->activate();
    placeFloating();
}

void EditorView::setScanningOverlay(const QString &text) {
    delete m_scanning;
    if (text.isEmpty())
        return;
    m_scanning = new ScanningOverlay(text, this);
    placeFloating();
    m_scanning->show();
}

QWidget *EditorView::overlayLayer() const {
    return m_stage->overlayLayer();
}

void EditorView::clearOverlayLayer() {
    m_stage->clearOverlay();
}

void EditorView::presentSheet(QWidget *sheet) {
    delete m_sheet;
    m_sheet = new SheetGround(sheet, this);
    placeFloating();
    m_sheet->show();
    sheet->show();
    sheet->setFocus();
}

void EditorView::dismissSheet() {
    if (!m_sheet)
        return;
    m_sheet->hide();
    m_sheet->deleteLater(); // its own button may have asked for it
    m_sheet = nullptr;
    if (m_canvas)
        m_canvas->setFocus();
}

void EditorView::keyPressEvent(QKeyEvent *event) {
    const bool isCommand = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    if (m_sheet) {
        if (event->key() == Qt::Key_Escape)
            dismissSheet();
        return; // what is behind a sheet takes no keys
    }
    if (!isCommand) {
        if (event->key() == Qt::Key_Escape && m_model.isCropping())
            m_model.cancelCrop();
        else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && m_model.isCropping())
            m_model.applyCrop();
        else
            QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Z:
        m_model.undo();
        break;
    case Qt::Key_C:
        m_model.copyFlattened();
        break;
    case Qt::Key_S:
        m_model.saveFlattened();
        break;
    case Qt::Key_O:
        m_model.openImageFile();
        break;
    case Qt::Key_W:
        m_model.close(); // the view may be gone
        break;
    case Qt::Key_0:
        m_stage->zoomToFit();
        break;
    case Qt::Key_1:
        m_stage->zoomToFullSize();
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        m_stage->zoomIn();
        break;
    case Qt::Key_Minus:
        m_stage->zoomOut();
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace tavrine

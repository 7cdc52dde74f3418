#include "capture/editor/EditorModel.h"

#include "base/NotificationCenter.h"
#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "capture/SnipFiles.h"
#include "capture/editor/Flattening.h"
#include "capture/editor/ImageOpening.h"
#include "capture/editor/Paintable.h"
#include "ports/FilePanels.h"
#include "ports/Pasteboard.h"

#include <QDateTime>
#include <QPointer>

#include <utility>

namespace tavrine {
EditorModel::EditorModel(const QImage &image, Ports ports, Actions actions, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_actions(std::move(actions)),
      m_image(paintable(image)), // once: the views would make a copy of their own each, of gigabytes in the end
      m_selectedColor(colorPresets().front()) {}

QImage EditorModel::flattenedImage() const {
    if (!m_isCropping)
        return tavrine::flattenedImage(shownImage(), m_drawings);
    if (m_flattened.isNull())
        m_flattened = tavrine::flattenedImage(shownImage(), m_drawings);
    return m_flattened;
}

const std::array<QColor, 8> &EditorModel::colorPresets() {
    static const std::array presets{
        QColor(0xFF, 0x3B, 0x30),             // red
        QColor(0xFF, 0x95, 0x00),             // orange
        QColor::fromRgbF(1.0F, 0.85F, 0.0F),  // yellow
        QColor(0x34, 0xC7, 0x59),             // green
        QColor::fromRgbF(0.0F, 0.85F, 0.85F), // cyan
        QColor(0x00, 0x7A, 0xFF),             // blue
        QColor(0xAF, 0x52, 0xDE),             // purple
        QColor(0xFF, 0xFF, 0xFF),             // white
    };
    return presets;
}

void EditorModel::setCurrentTool(DrawingTool tool) {
    if (std::exchange(m_currentTool, tool) != tool)
        Q_EMIT currentToolChanged();
}

void EditorModel::setDrawings(std::vector<DrawingPath> drawings) {
    const bool isCountAnother = drawings.size() != m_drawings.size();
    m_drawings = std::move(drawings);
    m_flattened = {};
    Q_EMIT drawingsChanged();
    if (isCountAnother)
        setUnsavedChanges(!m_drawings.empty());
}

void EditorModel::setSelectedColor(const QColor &color) {
    if (!color.isValid() || color == m_selectedColor)
        return;
    m_selectedColor = color;
    Q_EMIT selectedColorChanged();
}

void EditorModel::setLineThickness(AnnotationThickness thickness) {
    if (std::exchange(m_lineThickness, thickness) != thickness)
        Q_EMIT lineThicknessChanged();
}

void EditorModel::setNextStampNumber(int number) {
    if (std::exchange(m_nextStampNumber, number) != number)
        Q_EMIT nextStampNumberChanged();
}

void EditorModel::decreaseStampNumber() {
    if (canDecreaseStampNumber())
        setNextStampNumber(m_nextStampNumber - 1);
}

void EditorModel::increaseStampNumber() {
    if (m_nextStampNumber < std::numeric_limits<int>::max())
        setNextStampNumber(m_nextStampNumber + 1);
}

void EditorModel::undo() {
    if (m_drawings.empty())
        return;
    if (m_drawings.back().kind == DrawingKind::number)
        setNextStampNumber(std::max(m_nextStampNumber - 1, 1));
    std::vector<DrawingPath> left = m_drawings;
    left.pop_back();
    // First, so that a text that is being typed goes with its canvas and is not put back by it.
    Q_EMIT canvasReplaced();
    setDrawings(std::move(left));
}

void EditorModel::toggleCropping() {
    m_isCropping = !m_isCropping;
    m_flattened = {};
    m_crop.clear();
    Q_EMIT cropChanged();
}

void EditorModel::dragCrop(QPointF start, QPointF present, QSizeF shownSize) {
    if (!m_isCropping)
        return;
    m_crop.drag(start, present, shownSize);
    Q_EMIT cropChanged();
}

void EditorModel::applyCrop() {
    if (!m_isCropping)
        return;
    if (const std::optional<QImage> cropped = cropImage(flattenedImage(), m_crop.rect())) {
        m_editedImage = *cropped;
        m_flattened = {};
        setUnsavedChanges(true);
        setDrawings({}); // they are in the pixels now
        Q_EMIT imageChanged();
    }
    toggleCropping();
}

void EditorModel::cancelCrop() {
    if (m_isCropping)
        toggleCropping();
}

bool EditorModel::copyFlattened() {
    const QImage image = flattenedImage();
    if (image.isNull())
        return false; // there was no memory for it: what stands on the pasteboard stays
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.writeImage(image);
    setCopied(true);
    m_ports.time.asyncAfter(copiedLength, this, [this] { setCopied(false); });
    return true;
}

void EditorModel::saveAndCopy() {
    if (copyFlattened())
        setUnsavedChanges(false);
}

void EditorModel::saveFlattened() {
    if (m_ports.documents.isEmpty())
        return;
    SavePanel panel;
    panel.title = QStringLiteral("Save Snip");
    panel.fileName = saveFileName(m_ports.time.now(), QLocale(), QTimeZone::systemTimeZone());
    panel.directory = m_ports.documents + QStringLiteral("/tavrine");
    panel.filter = QStringLiteral("PNG (*.png)");
    makePrivateFolder(panel.directory); // the panel shows what there is, whether or not this worked
    // What was flattened now is what is saved, also when the editor is closed before the answer.
    m_ports.filePanels.runSavePanel(panel, [files = SnipFiles(m_ports.fileQueue, m_ports.time),
                                            image = flattenedImage(),
                                            self = QPointer(this)](const std::optional<QString> &path) {
        if (!path || image.isNull())
            return;
        files.saveAs(*path, files.prepare(image, {}), FileRights::asUsual, [self](const SnipFiles::Outcome &outcome) {
            if (outcome.isWritten())
                return printLine(QStringLiteral("Image saved to: ") + outcome.path);
            printLine(QStringLiteral("Failed to save image: ") + outcome.failure);
            if (self)
                self->tellSaveFailure(saveFailureMessage(outcome));
        });
    });
}

void EditorModel::tellSaveFailure(const QString &message) {
    m_saveFailure = message;
    Q_EMIT saveFailureChanged();
    m_ports.time.asyncAfter(saveFailureLength, this, [this, told = ++m_saveFailures] {
        if (told != m_saveFailures)
            return; // a later one stays its own time
        m_saveFailure.clear();
        Q_EMIT saveFailureChanged();
    });
}

void EditorModel::openImageFile() {
    if (!m_actions.openNewImage)
        return;
    imageOpening::choose(m_ports.filePanels, m_ports.imageCoder, [self = QPointer(this)](const QImage &image) {
        if (self)
            self->m_actions.openNewImage(image); // the model may be gone
    });
}

void EditorModel::takeNewSnip() {
    printLine(QStringLiteral("DEBUG: EditorView - 'New Snip' requested. Posting notification..."));
    m_ports.center.post(QLatin1String(restartSnipNotification));
}

void EditorModel::close() {
    if (m_actions.close)
        m_actions.close(); // the model may be gone
}

void EditorModel::extractText() {
    if (m_actions.extractText)
        m_actions.extractText();
}

void EditorModel::scanQr() {
    if (m_actions.scanQr)
        m_actions.scanQr();
}

QString EditorModel::saveFileName(Date date, const QLocale &locale, const QTimeZone &zone) {
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(qint64(date.secondsSince1970 * 1000), zone);
    return QStringLiteral("snip_") + locale.toString(moment.date(), QStringLiteral("MMMM dd")) + QLatin1Char('_') +
           locale.toString(moment.time(), QStringLiteral("hh.mmAP")) + QStringLiteral(".png");
}

void EditorModel::setUploadButton(std::unique_ptr<UploadButton> button) {
    m_uploadButton = std::move(button);
    connect(m_uploadButton.get(), &UploadButton::changed, this, &EditorModel::uploadChanged);
    Q_EMIT uploadChanged();
}

void EditorModel::upload() {
    if (m_uploadButton)
        m_uploadButton->press();
}

void EditorModel::setUnsavedChanges(bool hasThem) {
    if (std::exchange(m_hasUnsavedChanges, hasThem) != hasThem)
        Q_EMIT hasUnsavedChangesChanged();
}

void EditorModel::setCopied(bool isCopied) {
    if (std::exchange(m_isCopied, isCopied) != isCopied)
        Q_EMIT isCopiedChanged();
}

} // namespace tavrine

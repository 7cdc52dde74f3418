#include "capture/editor/EditorScans.h"

#include "base/DesktopWords.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRLabelBubble.h"
#include "capture/reading/ReadingTexts.h"
#include "capture/reading/ScanningAnimationView.h"
#include "look/Control.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/PillView.h"
#include "look/Symbols.h"

#include <QEvent>
#include <QPainter>

namespace tavrine {
namespace {

constexpr int closeSide = 28;
constexpr int toastTop = 66; // under the editor's bar

QString utf8Text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

/// Takes the bubbles away. On a ground of its own, as the picture may have any colour.
class CloseButton final : public look::Control {
public:
    explicit CloseButton(QWidget *parent) : Control(parent) {
        setToolTip(inDesktopWords(QStringLiteral("Hide the codes")));
        setAccessibleName(toolTip());
        setCursor(Qt::PointingHandCursor);
    }

protected:
    void paint(QPainter &painter) override {
        look::fillRounded(painter, rect(), cornerRadius(), ground(theme().elevated));
        look::strokeHairline(painter, rect(), cornerRadius(), theme().outline);
        look::paintSymbol(painter, rect(), utf8Text(readingTexts::closeCircle), look::symbolsize::large, theme().text);
    }
    [[nodiscard]] qreal cornerRadius() const override { return height() / 2.0; }
};

} // namespace

EditorScans &EditorScans::of(EditorView &editor, const Ports &ports) {
    if (auto *scans = editor.findChild<EditorScans *>(QString(), Qt::FindDirectChildrenOnly))
        return *scans;
    return *new EditorScans(editor, ports);
}

std::function<void(EditorView &)> EditorScans::extractText(const Ports &ports) {
    return [ports](EditorView &editor) { of(editor, ports).model().extractText(editor.model().shownImage()); };
}

std::function<void(EditorView &)> EditorScans::scanQr(const Ports &ports) {
    return [ports](EditorView &editor) { of(editor, ports).model().scanQR(editor.model().shownImage()); };
}

EditorScans::EditorScans(EditorView &editor, const Ports &ports)
    : QObject(&editor), m_editor(editor), m_ports(ports), m_model(ports.scans) {
    connect(&m_model, &EditorScanModel::changed, this, &EditorScans::show);
    // The editor has taken the bubbles of the former picture away already.
    connect(&editor.model(), &EditorModel::imageChanged, &m_model, &EditorScanModel::replacePicture);
    editor.overlayLayer()->installEventFilter(this);
    editor.installEventFilter(this);
}

bool EditorScans::eventFilter(QObject *object, QEvent *event) {
    if (event->type() == QEvent::Resize) {
        if (object == m_editor.overlayLayer()) {
            if (m_scanning)
                m_scanning->setGeometry(m_editor.overlayLayer()->rect());
            placeLabels();
        } else {
            showToast();
        }
    }
    return QObject::eventFilter(object, event);
}

void EditorScans::show() {
    if (std::exchange(m_saysExtracting, m_model.isOCRScanning()) != m_model.isOCRScanning())
        m_editor.setScanningOverlay(m_saysExtracting ? utf8Text(readingTexts::extracting) : QString());
    showSheet();
    showScanning();
    showLabels();
    showToast();
}

void EditorScans::showSheet() {
    if (!m_model.showOCRResult() || m_sheet)
        return;
    auto *sheet = new OCRResultView(m_model.ocrResultText(), m_ports.pasteboard, m_ports.urlOpener, m_ports.scans.time,
                                    {.onCopy = {}, .onCancel = [this] { m_editor.dismissSheet(); }});
    m_sheet = sheet;
    // However it goes: by its buttons, by Escape, or with a newer sheet.
    connect(sheet, &QObject::destroyed, &m_model, &EditorScanModel::closeOCRResult);
    m_editor.presentSheet(sheet);
}

void EditorScans::showScanning() {
    if (m_model.isQRScanning() == !m_scanning.isNull())
        return;
    if (m_scanning) {
        delete m_scanning;
        return;
    }
    QWidget *layer = m_editor.overlayLayer();
    m_scanning = new ScanningAnimationView(layer);
    m_scanning->setGeometry(layer->rect());
    m_scanning->show();
}

void EditorScans::showLabels() {
    const QList<QRAnnotation> wanted = m_model.showQRLabels() ? m_model.qrAnnotations() : QList<QRAnnotation>();
    if (wanted == m_shown)
        return;
    m_shown = wanted;
    for (const auto &[box, bubble] : std::as_const(m_bubbles))
        if (bubble)
            bubble->deleteLater(); // its own click may have led here
    m_bubbles.clear();
    if (m_close) {
        m_close->hide();
        m_close->deleteLater();
        m_close.clear();
    }
    if (wanted.isEmpty())
        return;
    QWidget *layer = m_editor.overlayLayer();
    for (const QRAnnotation &annotation : wanted) {
        auto *bubble = new QRLabelBubble(annotation.payload, isUrlForBubble(annotation.payload), m_ports.pasteboard,
                                         m_ports.urlOpener, m_ports.scans.time, layer);
        m_bubbles.append({annotation.boundingBox, bubble});
        bubble->show();
    }
    auto *close = new CloseButton(layer);
    connect(close, &QAbstractButton::clicked, &m_model, &EditorScanModel::dismissQRLabels);
    m_close = close;
    placeLabels();
    close->show();
}

void EditorScans::placeLabels() {
    const QSize view = m_editor.overlayLayer()->size();
    for (const auto &[box, bubble] : std::as_const(m_bubbles)) {
        if (!bubble)
            continue;
        const QSize size = bubble->sizeHint();
        const QPointF centre = bubbleCentre(box, view);
        bubble->setGeometry(QRect((centre - QPointF(size.width(), size.height()) / 2).toPoint(), size));
    }
    if (m_close)
        m_close->setGeometry(view.width() - closeSide - look::space::small, look::space::small, closeSide, closeSide);
}

void EditorScans::showToast() {
    if (!m_toast) {
        if (!m_model.showNoQRToast())
            return;
        m_toast = new PillView(utf8Text(EditorScanModel::noCodesSymbol), utf8Text(EditorScanModel::noCodesMessage),
                               &m_editor);
    }
    const QSize size = m_toast->sizeHint();
    m_toast->setGeometry(QRect(QPoint((m_editor.width() - size.width()) / 2, toastTop), size));
    m_toast->setShown(m_model.showNoQRToast());
}

} // namespace tavrine

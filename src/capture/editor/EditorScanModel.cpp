#include "capture/editor/EditorScanModel.h"

#include "base/ConcurrentQueue.h"
#include "base/Print.h"
#include "base/Time.h"
#include "capture/reading/OCRManager.h"
#include "ports/CodeDetector.h"

#include <QPointer>

#include <algorithm>

namespace tavrine {
namespace {

QList<QRAnnotation> annotationsIn(CodeDetector &detector, const QImage &image, const std::stop_token &stop) {
    QList<QRAnnotation> annotations;
    if (image.isNull())
        return annotations;
    const CodeDetector::Result result = detector.detect(image, stop);
    if (const auto *failure = std::get_if<CodeDetector::Failure>(&result)) {
        if (!stop.stop_requested())
            printLine(QStringLiteral("Failed to read codes: ") + failure->reason);
        return annotations;
    }
    const auto &codes = std::get<QList<DetectedCode>>(result);
    for (const DetectedCode &code : codes)
        annotations.append({QUuid::createUuid(), code.payload, code.boundingBox});
    return annotations;
}

} // namespace

EditorScanModel::EditorScanModel(const Ports &ports, QObject *parent) : QObject(parent), m_ports(ports) {}

EditorScanModel::~EditorScanModel() {
    m_unwantedText.request_stop();
    m_unwantedCodes.request_stop();
}

void EditorScanModel::extractText(const QImage &image) {
    if (m_isOCRScanning)
        return;
    m_isOCRScanning = true;
    Q_EMIT changed();
    const Seconds pressed = m_ports.time.systemUptime();
    m_ports.manager.recognizeText(
        image,
        [time = &m_ports.time, weak = QPointer(this), pressed](const std::optional<QString> &text) {
            time->async([time, weak, pressed, text] {
                const Seconds held = std::max(shortestOCR - (time->systemUptime() - pressed), Seconds{0});
                time->asyncAfter(held, [weak, text] {
                    if (weak)
                        weak->endOCR(text);
                });
            });
        },
        m_unwantedText.get_token());
}

void EditorScanModel::endOCR(const std::optional<QString> &text) {
    m_isOCRScanning = false;
    if (text) {
        m_ocrResultText = *text;
        m_showOCRResult = true;
    }
    Q_EMIT changed();
}

void EditorScanModel::closeOCRResult() {
    m_showOCRResult = false;
    Q_EMIT changed();
}

void EditorScanModel::scanQR(const QImage &image) {
    if (m_isQRScanning)
        return;
    m_isQRScanning = true;
    Q_EMIT changed();
    m_ports.detectionQueue.async([detector = &m_ports.detector, time = &m_ports.time, weak = QPointer(this),
                                  stop = m_unwantedCodes.get_token(), image] {
        if (stop.stop_requested())
            return;
        const QList<QRAnnotation> annotations = annotationsIn(*detector, image, stop);
        time->async([weak, stop, annotations] {
            if (weak && !stop.stop_requested())
                weak->endQR(annotations);
        });
    });
}

void EditorScanModel::replacePicture() {
    m_unwantedCodes.request_stop(); // a scan that is under way answers for the former one
    m_unwantedCodes = {};
    m_isQRScanning = false;
    dismissQRLabels();
}

void EditorScanModel::endQR(const QList<QRAnnotation> &annotations) {
    m_isQRScanning = false;
    if (!annotations.isEmpty()) {
        m_qrAnnotations = annotations;
        m_showQRLabels = true;
    } else {
        m_showNoQRToast = true;
        m_ports.time.asyncAfter(toastShown, this, [this] {
            m_showNoQRToast = false;
            Q_EMIT changed();
        });
    }
    Q_EMIT changed();
}

void EditorScanModel::dismissQRLabels() {
    m_qrAnnotations.clear();
    m_showQRLabels = false;
    Q_EMIT changed();
}

} // namespace tavrine

#pragma once

#include "base/Date.h"
#include "capture/reading/QRAnnotation.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QString>

#include <optional>
#include <stop_token>

namespace tavrine {

class CodeDetector;
class OCRManager;
class ConcurrentQueue;
class Time;

/// "Extract Text" and "Scan QR" of the editor: what is under way and what was found. Belongs to the editor's view; main
/// thread. What is read is the picture under the annotations, which the editor hands over.
class EditorScanModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds shortestOCR{1.2}; ///< a flash of the overlay would look like a fault
    static constexpr Seconds toastShown{2.5};
    static constexpr auto noCodesMessage = "No QR codes found in this image";
    static constexpr auto noCodesSymbol = "qrcode";

    /// All of them outlive the model.
    struct Ports {
        OCRManager &manager;
        CodeDetector &detector;
        ConcurrentQueue &detectionQueue;
        Time &time;
    };
    explicit EditorScanModel(const Ports &ports, QObject *parent = nullptr);
    /// Nobody waits for what is being read.
    ~EditorScanModel() override;

    [[nodiscard]] bool isOCRScanning() const { return m_isOCRScanning; }
    [[nodiscard]] const QString &ocrResultText() const { return m_ocrResultText; }
    [[nodiscard]] bool showOCRResult() const { return m_showOCRResult; }
    [[nodiscard]] bool isQRScanning() const { return m_isQRScanning; }
    [[nodiscard]] const QList<QRAnnotation> &qrAnnotations() const { return m_qrAnnotations; }
    [[nodiscard]] bool showQRLabels() const { return m_showQRLabels; }
    [[nodiscard]] bool showNoQRToast() const { return m_showNoQRToast; }

    // The buttons. A press while the same scan is under way is none.
    void extractText(const QImage &image);
    void scanQR(const QImage &image);

    void closeOCRResult();  ///< the sheet
    void dismissQRLabels(); ///< the bubbles' button
    void replacePicture();  ///< there is another: what was found, or is still being found, belongs to the former one

Q_SIGNALS:
    void changed();

private:
    void endOCR(const std::optional<QString> &text);
    void endQR(const QList<QRAnnotation> &annotations);

    Ports m_ports;
    bool m_isOCRScanning = false;
    QString m_ocrResultText;
    bool m_showOCRResult = false;
    bool m_isQRScanning = false;
    QList<QRAnnotation> m_qrAnnotations;
    bool m_showQRLabels = false;
    bool m_showNoQRToast = false;
    std::stop_source m_unwantedText;
    std::stop_source m_unwantedCodes; ///< of this picture
};

} // namespace tavrine

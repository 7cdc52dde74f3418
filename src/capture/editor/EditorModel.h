#pragma once

#include "base/Date.h"
#include "capture/editor/CropSelection.h"
#include "capture/editor/DrawingPath.h"
#include "upload/UploadButton.h"

#include <QImage>
#include <QLocale>
#include <QObject>
#include <QTimeZone>

#include <array>
#include <functional>
#include <memory>

namespace tavrine {

class FilePanels;
class ImageCoder;
class NotificationCenter;
class Pasteboard;
class SerialQueue;
class Time;

/// One picture in the editor: what is drawn on it, how it is cropped, and the ways out of it.
///
/// Belongs to the editor's view; lives on the main thread.
///
///  1. Annotations stay apart from the pixels. `flattenedImage` burns them in, at the picture's own size; copy, save,
///     upload and crop all take that.
///  2. `hasUnsavedChanges` follows the number of annotations: whenever it changes, the flag tells whether there are
///     any. A crop sets the flag itself, before the number changes.
///  3. Undo takes the last annotation back, never a crop.
class EditorModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds copiedLength{2.0};
    static constexpr Seconds saveFailureLength{5.0};
    static constexpr auto restartSnipNotification = "com.tavrine.restartSnip";

    /// All outlive the model.
    struct Ports {
        Time &time;
        Pasteboard &pasteboard;
        FilePanels &filePanels;
        ImageCoder &imageCoder;
        NotificationCenter &center;
        QString documents; ///< the person's documents folder; empty when there is none
        SerialQueue &fileQueue;
    };
    struct Actions {
        std::function<void(const QImage &)> openNewImage; ///< without it no other file can be opened from here
        std::function<void()> close;
        std::function<void()> extractText;
        std::function<void()> scanQr;
    };

    EditorModel(const QImage &image, Ports ports, Actions actions, QObject *parent = nullptr);

    // The picture. Without annotations: what was opened, or what the last crop left of it.
    [[nodiscard]] const QImage &shownImage() const { return m_editedImage.isNull() ? m_image : m_editedImage; }
    [[nodiscard]] QImage flattenedImage() const;
    [[nodiscard]] bool canOpenNewImage() const { return bool(m_actions.openNewImage); }

    // Annotations.
    [[nodiscard]] DrawingTool currentTool() const { return m_currentTool; }
    void setCurrentTool(DrawingTool tool);
    [[nodiscard]] const std::vector<DrawingPath> &drawings() const { return m_drawings; }
    void setDrawings(std::vector<DrawingPath> drawings);
    [[nodiscard]] const QColor &selectedColor() const { return m_selectedColor; }
    void setSelectedColor(const QColor &color); ///< nothing for a colour that is none
    [[nodiscard]] AnnotationThickness lineThickness() const { return m_lineThickness; }
    void setLineThickness(AnnotationThickness thickness);
    [[nodiscard]] int nextStampNumber() const { return m_nextStampNumber; }
    void setNextStampNumber(int number);
    [[nodiscard]] bool canDecreaseStampNumber() const { return m_nextStampNumber >= 2; }
    void decreaseStampNumber();
    void increaseStampNumber();
    void undo();
    /// The colours that are offered, in their order.
    [[nodiscard]] static const std::array<QColor, 8> &colorPresets();

    // Crop.
    [[nodiscard]] bool isCropping() const { return m_isCropping; }
    [[nodiscard]] const CropSelection &crop() const { return m_crop; }
    void toggleCropping();
    void dragCrop(QPointF start, QPointF present, QSizeF shownSize); ///< nothing outside of crop mode
    void applyCrop();
    void cancelCrop();

    // Ways out.
    [[nodiscard]] bool hasUnsavedChanges() const { return m_hasUnsavedChanges; }
    [[nodiscard]] bool isCopied() const { return m_isCopied; }
    bool copyFlattened(); ///< false when there is no memory for it; nothing is another then
    void saveAndCopy();   ///< writes no file
    void saveFlattened(); ///< asks where; what is seen now is written in the background after the answer
    [[nodiscard]] const QString &saveFailure() const { return m_saveFailure; } ///< told for a while; else empty
    void openImageFile();
    void takeNewSnip();
    void close();
    void extractText();
    void scanQr();
    [[nodiscard]] static QString saveFileName(Date date, const QLocale &locale, const QTimeZone &zone);

    // Upload. Null until there is one.
    [[nodiscard]] UploadButton *uploadButton() const { return m_uploadButton.get(); }
    void setUploadButton(std::unique_ptr<UploadButton> button);
    void upload();

Q_SIGNALS:
    void imageChanged();
    void currentToolChanged();
    void drawingsChanged();
    void selectedColorChanged();
    void lineThicknessChanged();
    void nextStampNumberChanged();
    void canvasReplaced(); ///< whatever gesture or typing is under way on the canvas is dropped
    void cropChanged();    ///< the mode or the selection
    void hasUnsavedChangesChanged();
    void isCopiedChanged();
    void saveFailureChanged();
    void uploadChanged();

private:
    void setUnsavedChanges(bool hasThem);
    void setCopied(bool isCopied);
    void tellSaveFailure(const QString &message);

    Ports m_ports;
    Actions m_actions;
    QImage m_image;
    QImage m_editedImage;
    mutable QImage m_flattened; // in crop mode, where it is shown and then cropped: it may be a gigabyte
    bool m_isCropping = false;
    CropSelection m_crop;
    DrawingTool m_currentTool = DrawingTool::pen;
    std::vector<DrawingPath> m_drawings;
    QColor m_selectedColor;
    AnnotationThickness m_lineThickness = AnnotationThickness::thin;
    int m_nextStampNumber = 1;
    bool m_hasUnsavedChanges = false;
    bool m_isCopied = false;
    QString m_saveFailure;
    int m_saveFailures = 0;
    std::unique_ptr<UploadButton> m_uploadButton;
};

} // namespace tavrine

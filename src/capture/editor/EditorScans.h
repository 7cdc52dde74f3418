#pragma once

#include "capture/editor/EditorScanModel.h"
#include "capture/editor/EditorView.h"

#include <QPointer>

namespace tavrine {

class PillView;
class UrlOpener;

/// What "Extract Text" and "Scan QR" show in an editor: the overlays, the sheet, the bubbles and the toast. One for
/// each editor, which owns it; main thread. It shows its model and decides nothing.
class EditorScans : public QObject {
    Q_OBJECT

public:
    /// All of them outlive every editor.
    struct Ports {
        EditorScanModel::Ports scans;
        Pasteboard &pasteboard;
        UrlOpener &urlOpener;
    };

    /// Of this editor, made at its first scan.
    [[nodiscard]] static EditorScans &of(EditorView &editor, const Ports &ports);
    /// For `EditorView::Hooks`.
    [[nodiscard]] static std::function<void(EditorView &)> extractText(const Ports &ports);
    [[nodiscard]] static std::function<void(EditorView &)> scanQr(const Ports &ports);

    [[nodiscard]] EditorScanModel &model() { return m_model; }

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    EditorScans(EditorView &editor, const Ports &ports);
    void show();
    void showSheet();
    void showScanning();
    void showLabels();
    void placeLabels();
    void showToast();

    EditorView &m_editor;
    Ports m_ports;
    EditorScanModel m_model;
    QPointer<QWidget> m_sheet;
    QPointer<QWidget> m_scanning;
    QPointer<PillView> m_toast;
    QPointer<QWidget> m_close;
    QList<QPair<QRectF, QPointer<QWidget>>> m_bubbles;
    QList<QRAnnotation> m_shown; ///< whose bubbles these are
    bool m_saysExtracting = false;
};

} // namespace tavrine

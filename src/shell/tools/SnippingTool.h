#pragma once

#include "base/MadeOnce.h"
#include "base/SerialQueue.h"
#include "capture/ClearedScreen.h"
#include "capture/ScreenSnipper.h"
#include "shell/tools/Tool.h"

namespace tavrine {

class EditorTool;
class OCRNotepadFlow;
class QRScanner;
class Shell;
class SnipFlow;
class TakenCorner;
struct ClipboardItem;

/// Captures of the screen, and what a capture's card leads to: files, the editor, the notepad with its text, an upload;
/// and the scan of the screen for codes.
class SnippingTool final : public Tool {
public:
    /// The editor opens what the card hands on.
    SnippingTool(Shell &shell, EditorTool &editor, TakenCorner &corner);
    ~SnippingTool() override;

    void launch(bool isOn) override;
    void setOn(bool isOn) override;
    void open(Trigger trigger) override; ///< the hot key has asked for the permission

    /// The way of menus and quick actions into a capture, over the permission. Nothing while the switch is off.
    void startSnip();
    /// Straight into a capture, for who was in one already.
    void startCapture();
    void startQrScan();
    /// Of the capture that has just been made; nothing where its card has gone.
    void giveCardKeyboard();

    /// A capture that comes through the pasteboard instead of a file: the next picture of the history is it.
    void setWaitingForCapture(bool isWaiting) { m_isWaitingForCapture = isWaiting; }
    [[nodiscard]] bool isWaitingForCapture() const { return m_isWaitingForCapture; }
    void showPreviewCard(const ClipboardItem &item);

    /// For what else looks at the screen.
    [[nodiscard]] ClearedScreen &clearedScreen() { return m_clearedScreen; }

    /// Null until there was something to show.
    [[nodiscard]] SnipFlow *flowIfMade() const { return m_flow.ifMade(); }

private:
    struct Notepad;

    SnipFlow &flow();
    [[nodiscard]] std::unique_ptr<SnipFlow> makeFlow();
    [[nodiscard]] std::unique_ptr<QRScanner> makeScanner();
    void getTextFromSnip(const QImage &image);

    Shell &m_shell;
    EditorTool &m_editor;
    TakenCorner &m_corner;
    bool m_isWaitingForCapture = false;
    ScreenSnipper m_snipper;
    ClearedScreen m_clearedScreen;
    SerialQueue m_fileQueue{QStringLiteral("com.tavrine.snip")};
    MadeOnce<SnipFlow> m_flow;
    MadeOnce<Notepad> m_notepad;
    MadeOnce<QRScanner> m_scanner;
};

} // namespace tavrine

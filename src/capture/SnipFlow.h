#pragma once

#include "base/SerialQueue.h"
#include "capture/ClearedScreen.h"
#include "capture/SnipFiles.h"
#include "capture/SnipSaveDialogModel.h"
#include "capture/SnippetPreviewModel.h"
#include "panels/FloatingPanel.h"
#include "panels/TakenCorner.h"
#include "ports/Folders.h"

#include <QImage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace tavrine {

class FilePanels;
class Pasteboard;
class ScreenSnipper;
class Uploads;
class UserDefaults;

/// What happens with a capture: the way into one, the pasteboard, the card in the corner with its buttons, and the
/// rules by which a capture becomes a file.
///
/// One instance, as long as the process; lives on the main thread. Its views hold no rules: they show the models.
class SnipFlow : public QObject, private ClearedScreen::Windows {
    Q_OBJECT

public:
    /// All outlive the flow.
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Pasteboard &pasteboard;
        Screens &screens;
        PanelWindows &windows;
        FilePanels &filePanels;
        ScreenSnipper &snipper;
        ClearedScreen &screen;
        SerialQueue &fileQueue;
        Folders folders;
        Uploads &uploads;
        TakenCorner &corner;
    };
    /// What the flow asks of other tools. One that is missing does nothing.
    struct Actions {
        std::function<bool()> mayCaptureScreen; ///< asks the person when it may not
        /// Keeps the picture for the history; the name of its file, or none. Called on any thread.
        std::function<std::optional<QString>(const QImage &)> saveImage;
        std::function<void()> activateApplication;
        std::function<void(const QImage &)> openEditorDirectly;
        std::function<void(const QImage &)> getTextFromSnip;
        /// For a save that failed; the icon is a symbol.
        std::function<void(const QString &message, const QString &icon)> showToast = {};
    };
    /// The content of the windows, taken over by them. The models live at least as long.
    struct Views {
        std::function<QWidget *(std::shared_ptr<SnippetPreviewModel>)> card;
        std::function<QWidget *(std::shared_ptr<SnipSaveDialogModel>)> saveDialog;
    };
    using Completion = std::function<void(bool isSaved)>;

    static constexpr double cardWidth = 340;
    static constexpr double cardHeight = 248;
    static constexpr double cardMargin =
        18; ///< from the lower left corner of the usable screen, and from what is there
    static constexpr double dialogWidth = 340;
    static constexpr double dialogHeight = 264;
    static constexpr Seconds newSnipDelay = ClearedScreen::settling;
    static constexpr Seconds choosePanelDelay{0.05}; ///< the dialog is off the screen by then

    SnipFlow(Ports ports, Actions actions, Views views);
    ~SnipFlow() override;

    /// The way of menus and quick actions into a capture, over the permission.
    void startSnip();
    /// Straight into a capture, for who was in one already. What the last one left on the screen is not in the picture.
    void startCapture();
    /// A capture has come: the pasteboard, the history's file, the card.
    void presentSnip(const QImage &image);

    void showSnipPreview(const QImage &image);
    void dismissSnipPreview(Dismissal dismissal);
    /// For who has no pointer: the card gets the keyboard, and the time that it has left waits. Nothing without a card.
    void giveCardKeyboard();
    void saveSnip(const QImage &image, const Completion &completion);
    /// Saves without a question, for a capture whose text was read.
    void autoSaveSnip(const QImage &image);
    void showSnipSaveDialog(const QString &directory, SnipSaveDialogModel::Actions actions);
    void dismissSnipSaveDialog(Dismissal dismissal);

    /// The folder for captures: the person's choice, else "tavrine" in the documents, else in the home.
    [[nodiscard]] QString snipDefaultDirectory() const;
    [[nodiscard]] QString snipFileName() const;

    [[nodiscard]] bool isPreviewShown() const { return m_card.isBuilt() || m_cardWithKeyboard.isBuilt(); }
    /// The windows; null when there are none.
    [[nodiscard]] PanelWindow *previewWindow() const {
        return m_cardWithKeyboard.isBuilt() ? m_cardWithKeyboard.window() : m_card.window();
    }
    [[nodiscard]] PanelWindow *saveDialogWindow() const { return m_dialog.window(); }
    [[nodiscard]] bool isSaveDialogShown() const { return m_dialog.isBuilt(); }
    /// The models of what is shown; null when nothing is.
    [[nodiscard]] SnippetPreviewModel *previewModel() const { return m_cardModel.get(); }
    [[nodiscard]] SnipSaveDialogModel *saveDialogModel() const { return m_dialogModel.get(); }

private:
    bool setAside() override;
    void bringBack() override;
    void storeElsewhere(const QImage &image);
    [[nodiscard]] SnippetPreviewModel::Actions cardActions(const QImage &image);
    void writeToPasteboard(const QImage &image);
    [[nodiscard]] QString beginDragFile(const QImage &image);
    void saveHere(const SnipFiles::Prepared &png, const QString &directory, bool useAsDefault,
                  const Completion &completion);
    void tellOfFailure(const SnipFiles::Outcome &outcome) const;
    void runSavePanel(const SnipFiles::Prepared &png, const QString &directory, bool useAsDefault,
                      const Completion &completion);

    Ports m_ports;
    Actions m_actions;
    Views m_views;
    SnipFiles m_files;
    std::shared_ptr<SnippetPreviewModel> m_cardModel;
    std::shared_ptr<SnipSaveDialogModel> m_dialogModel;
    int m_storings = 0;        ///< pictures on the queue
    bool m_isStarting = false; ///< the tool comes in a moment
    FloatingPanel m_card;
    FloatingPanel m_cardWithKeyboard; ///< in the other's place, once it was asked for
    FloatingPanel m_dialog;
    std::optional<SerialQueue> m_storing; ///< while a large picture is stored; last: its work uses the rest
};

} // namespace tavrine

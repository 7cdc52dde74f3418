#include "capture/reading/OCRNotepadFlow.h"

#include "capture/reading/OCRManager.h"
#include "ports/PanelWindow.h"
#include "ports/Screens.h"

namespace tavrine {
namespace {

/// Gone from the overview of windows; the numbers are the platform's.
constexpr quint32 transient = 8;

} // namespace

OCRNotepadFlow::OCRNotepadFlow(const Ports &ports, Actions actions) : m_ports(ports), m_actions(std::move(actions)) {}

OCRNotepadFlow::~OCRNotepadFlow() = default;

void OCRNotepadFlow::getTextFromSnip(const QImage &image) {
    auto state = std::make_shared<OCRNotepadState>();
    showOCRNotepad(state, [save = m_actions.autoSaveSnip, image] { save(image); });
    m_ports.manager.recognizeForNotepad(image, *state);
}

void OCRNotepadFlow::showOCRNotepad(std::shared_ptr<OCRNotepadState> state, std::function<void()> closeAction) {
    closeOCRNotepad();
    m_closeAction = std::move(closeAction);
    m_state = std::move(state);
    m_window = m_ports.windows.makePanel({.title = QStringLiteral("Extracted Text"),
                                          .contentSize = {width, height},
                                          .level = windowLevel::floating,
                                          .collectionBehavior = collectionBehavior::canJoinAllSpaces | transient |
                                                                collectionBehavior::fullScreenAuxiliary,
                                          .hasShadow = false});
    m_window->setContentView(m_actions.makeView(*m_state, [this] { closeOCRNotepad(); }));
    if (const auto screen = m_ports.screens.mainScreen()) {
        const QPointF middle = screen->visibleFrame.center();
        m_window->setFrame({middle.x() - width / 2, middle.y() - height / 2, width, height});
    }
    m_window->setAlpha(0);
    m_window->orderFrontRegardless();
    m_window->makeKeyAndOrderFront();
    m_actions.fade(*m_window, 1, fadeIn, {});
    m_clickMonitor = m_ports.monitors.addGlobalMonitor(eventMask::leftMouseDown | eventMask::rightMouseDown,
                                                       [this](const InputEvent &) { clicked(); });
}

void OCRNotepadFlow::clicked() {
    if (m_window && !m_window->frame().contains(m_ports.screens.mouseLocation()))
        closeOCRNotepad();
}

void OCRNotepadFlow::closeOCRNotepad() {
    if (!m_window)
        return;
    m_state.reset(); // a result that is still to come is lost from here on
    m_clickMonitor.reset();
    const std::shared_ptr<PanelWindow> closing(std::move(m_window));
    m_closing.push_back(closing);
    // The fade may end after this flow, and then after its panel too: panels go before the desktop that they are on.
    m_actions.fade(*closing, 0, fadeOut,
                   [this, weak = std::weak_ptr(closing), closeAction = std::exchange(m_closeAction, {})] {
                       if (const auto window = weak.lock()) {
                           window->orderOut();
                           window->setContentView(nullptr);
                           std::erase(m_closing, window);
                       }
                       if (closeAction)
                           closeAction();
                   });
}

} // namespace tavrine

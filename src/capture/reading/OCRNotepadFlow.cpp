#include "capture/reading/OCRNotepadFlow.h"

#include "capture/reading/OCRManager.h"
#include "panels/Placement.h"

namespace tavrine {
namespace {

FloatingPanel::Traits traits() {
    return {.description = {.title = QStringLiteral("Extracted Text"),
                            .contentSize = {OCRNotepadFlow::width, OCRNotepadFlow::height},
                            .level = windowLevel::floating,
                            .collectionBehavior = collectionBehavior::canJoinAllSpaces | collectionBehavior::transient |
                                                  collectionBehavior::fullScreenAuxiliary,
                            .hasShadow = false},
            .placement = [](const Screens &screens, QSizeF size) -> std::optional<QRectF> {
                const auto screen = screens.mainScreen();
                return screen ? std::optional(centredIn(screen->visibleFrame, size)) : std::nullopt;
            },
            .motion = {.fadeIn = OCRNotepadFlow::fadeIn,
                       .timingIn = look::easeIn,
                       .fadeOut = OCRNotepadFlow::fadeOut,
                       .timingOut = look::easeIn}};
}

} // namespace

OCRNotepadFlow::OCRNotepadFlow(const Ports &ports, Actions actions)
    : m_ports(ports), m_actions(std::move(actions)), m_panel({ports.windows, ports.screens, ports.time}, traits()),
      m_departure({ports.workspace, ports.windows, ports.time}) {
    m_panel.setOnClosed([this] { closeOCRNotepad(); });
    QObject::connect(&m_departure, &Departure::left, &m_departure, [this] { closeOCRNotepad(); });
}

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
    m_panel.build(m_actions.makeView(*m_state, [this] { closeOCRNotepad(); }));
    m_panel.show();
    m_departure.panelShown();
    m_clickMonitor = m_ports.monitors.addGlobalMonitor(eventMask::leftMouseDown | eventMask::rightMouseDown,
                                                       [this](const InputEvent &) { clicked(); });
}

void OCRNotepadFlow::clicked() {
    if (m_panel.isVisibleAndWithout(m_ports.screens.mouseLocation()))
        closeOCRNotepad();
}

void OCRNotepadFlow::closeOCRNotepad() {
    if (!m_panel.isBuilt())
        return;
    m_state.reset(); // a result that is still to come is lost from here on
    m_clickMonitor.reset();
    m_panel.release(Dismissal::animated, std::exchange(m_closeAction, {}));
}

} // namespace tavrine

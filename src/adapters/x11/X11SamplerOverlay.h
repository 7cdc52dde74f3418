#pragma once

#include "adapters/frozen/SamplerModel.h"
#include "adapters/frozen/SamplerPainter.h"
#include "adapters/x11/frozen/OverlaySession.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <functional>

class QSocketNotifier;

namespace tavrine {

/// One frozen screen with a magnifier at the pointer. Owned by `X11ColorSamplers`, lives on the main thread.
class X11SamplerOverlay : public QObject {
public:
    using Selection = std::function<void(std::optional<QColor>)>;

    /// `picture` is a file with a picture of the screens where the server has none; empty for the server's. `onEnd` is
    /// called once, in a later turn, when the overlay is off the screen; it may delete the overlay.
    X11SamplerOverlay(const QString &picture, Selection onEnd);
    ~X11SamplerOverlay() override;

    /// Goes off the screen at once; the answer, no colour, comes as ever. Nothing when it has ended already.
    void leaveScreen();
    [[nodiscard]] bool isOnScreen() const { return m_notifier && !m_hasEnded; }

private:
    void showWhenFree();
    void show();
    void readEvents();
    void handle(const OverlayEvent &event);
    void tryGrabs();
    void repaint();
    void end(std::optional<QColor> colour);

    Selection m_onEnd;
    std::unique_ptr<OverlaySession> m_session;
    std::optional<SamplerModel> m_model;
    std::optional<SamplerPainter> m_painter{std::in_place};
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_retry; ///< runs until pointer and keyboard are ours
    QDeadlineTimer m_pointerDeadline;
    bool m_hasEnded = false;
};

} // namespace tavrine

#include "adapters/x11/X11SamplerOverlay.h"

#include <QSocketNotifier>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto betweenTries = 8ms;
// A pointer that another program holds for longer will not come; the person needs the screen back.
constexpr auto longestWithoutPointer = 10s;

} // namespace

X11SamplerOverlay::X11SamplerOverlay(const QString &picture, Selection onEnd)
    : m_onEnd(std::move(onEnd)), m_session(OverlaySession::begin(picture.toStdString())) {
    m_retry.setInterval(betweenTries);
    connect(&m_retry, &QTimer::timeout, this, &X11SamplerOverlay::tryGrabs);
    if (m_session)
        showWhenFree();
    else
        end(std::nullopt);
}

/// Another overlay may have to leave the screen first, and what it covered be painted.
void X11SamplerOverlay::showWhenFree() {
    if (m_hasEnded)
        return;
    if (const auto wait = m_session->timeToWait(); wait.count() > 0) {
        QTimer::singleShot(wait, Qt::PreciseTimer, this, &X11SamplerOverlay::showWhenFree);
        return;
    }
    if (m_session->freeze())
        show();
    else
        end(std::nullopt);
}

void X11SamplerOverlay::show() {
    m_model.emplace(m_session->rect(), m_session->firstPointer().value_or(m_session->rect().center()));
    SamplerPainter::paintPicture(*m_session);
    static_cast<void>(m_painter->moveTo(*m_session, m_model->pixel())); // all of it is put below
    m_session->show();
    m_notifier = std::make_unique<QSocketNotifier>(m_session->fileDescriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11SamplerOverlay::readEvents);
    m_pointerDeadline.setRemainingTime(longestWithoutPointer);
    m_retry.start();
    tryGrabs();
}

X11SamplerOverlay::~X11SamplerOverlay() = default;

void X11SamplerOverlay::tryGrabs() {
    m_session->tryGrabs();
    if (m_session->hasBoth())
        m_retry.stop();
    else if (!m_session->hasPointer() && m_pointerDeadline.hasExpired())
        return end(std::nullopt);
    readEvents(); // what came along with the answers
}

void X11SamplerOverlay::readEvents() {
    while (!m_hasEnded) {
        bool hasRead = false;
        while (const auto event = m_session->nextEvent()) {
            hasRead = true;
            handle(*event);
            if (m_hasEnded)
                return;
        }
        if (!hasRead)
            return;
        if (const auto place = m_model->takePointerMove())
            m_session->movePointer(*place);
        repaint();
    }
}

void X11SamplerOverlay::handle(const OverlayEvent &event) {
    switch (event.kind) {
    case OverlayEvent::Kind::pointerMoved:
        m_model->pointerMoved(event.place);
        break;
    case OverlayEvent::Kind::buttonPressed:
        m_model->buttonPressed(event.button, event.place);
        break;
    case OverlayEvent::Kind::buttonReleased:
        m_model->buttonReleased(event.button, event.place);
        break;
    case OverlayEvent::Kind::keyPressed:
        m_model->keyPressed(event.key, event.isControl);
        break;
    case OverlayEvent::Kind::uncovered:
        m_session->put({event.area});
        break;
    case OverlayEvent::Kind::ended:
        end(std::nullopt);
        return;
    }
    if (m_model->state() == SamplerModel::State::taken)
        end(QColor::fromRgb(static_cast<QRgb>(m_session->picture().at(m_model->pixel()))));
    else if (m_model->state() == SamplerModel::State::cancelled)
        end(std::nullopt);
}

void X11SamplerOverlay::repaint() {
    if (const auto areas = m_painter->moveTo(*m_session, m_model->pixel()); !areas.empty())
        m_session->put(areas);
}

void X11SamplerOverlay::leaveScreen() {
    if (m_hasEnded)
        return;
    end(std::nullopt);
    m_notifier.reset();
    m_session.reset();
}

void X11SamplerOverlay::end(std::optional<QColor> colour) {
    if (std::exchange(m_hasEnded, true))
        return;
    m_retry.stop();
    if (m_notifier)
        m_notifier->setEnabled(false);
    m_painter.reset();
    // The notifier may be the caller, and the session's pictures are large: both go in the next turn, before the
    // answer.
    QTimer::singleShot(0, this, [this, colour] {
        m_notifier.reset();
        m_session.reset();
        const Selection onEnd = std::move(m_onEnd);
        onEnd(colour);
    });
}

} // namespace tavrine

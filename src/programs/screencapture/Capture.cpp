#include "programs/screencapture/Capture.h"

#include "base/WholeFile.h"
#include "programs/screencapture/PngEncoder.h"
#include "programs/screencapture/ShutterSound.h"

#include <QDeadlineTimer>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include <poll.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr int noPicture = 1;
// Another program's menu lets go within a blink once it is told to; the next try must not be felt.
constexpr auto betweenTries = 8ms;
// A pointer that another program holds for longer will not come; the person needs the screen back.
constexpr auto longestWithoutPointer = 10s;

void complain(const std::string &what) {
    std::fprintf(stderr, "screencapture: %s\n", what.c_str());
}

} // namespace

bool Capture::isStopped() const {
    pollfd stop{m_stopDescriptor, POLLIN, 0};
    return ::poll(&stop, 1, 0) > 0;
}

int Capture::run() {
    if (const auto reason = whyNotWritable(m_line.file)) {
        complain(m_line.file + ": " + *reason);
        return noPicture;
    }
    m_session = OverlaySession::open();
    if (!m_session) {
        complain("the screen cannot be read");
        return noPicture;
    }
    if (isStopped())
        return noPicture;
    showFirst();
    const auto area = letPersonChoose();
    m_session->hide();
    if (!area)
        return noPicture;
    return save(*area);
}

void Capture::showFirst() {
    OverlayPainter::paintDimmed(m_session->canvas(), m_session->picture());
    m_session->show();
    m_session->tryGrabs();
}

std::optional<QRect> Capture::letPersonChoose() {
    SelectionModel model(m_session->rect(), m_session->firstPointer().value_or(m_session->rect().center()));
    std::vector<QRect> targets = m_session->windows();
    for (const OverlayMonitor &monitor : m_session->monitors())
        targets.push_back(monitor.area);
    model.setTargets(std::move(targets));
    const QDeadlineTimer pointerDeadline(longestWithoutPointer);
    repaint(model, false);
    while (!model.isFinished() && !m_hasEnded) {
        while (const auto event = m_session->nextEvent()) {
            handle(*event, model);
            if (model.isFinished() || m_hasEnded)
                break;
        }
        if (model.isFinished() || m_hasEnded)
            break;
        if (const auto place = model.takePointerMove())
            m_session->movePointer(*place);
        repaint(model, false);
        if (!m_session->hasBoth())
            m_session->tryGrabs();
        if (!m_session->hasPointer() && pointerDeadline.hasExpired())
            return std::nullopt;
        // Asking the server for something may have brought events along.
        if (const auto event = m_session->nextEvent()) {
            handle(*event, model);
            continue;
        }
        pollfd sources[] = {{m_session->fileDescriptor(), POLLIN, 0}, {m_stopDescriptor, POLLIN, 0}};
        ::poll(sources, 2, m_session->hasBoth() ? -1 : static_cast<int>(betweenTries.count()));
        if (sources[1].revents)
            return std::nullopt;
    }
    return model.state() == SelectionModel::State::accepted ? model.selection() : std::nullopt;
}

void Capture::handle(const OverlayEvent &event, SelectionModel &model) {
    switch (event.kind) {
    case OverlayEvent::Kind::pointerMoved:
        return model.pointerMoved(event.place);
    case OverlayEvent::Kind::buttonPressed:
        return model.buttonPressed(event.button, event.place);
    case OverlayEvent::Kind::buttonReleased:
        return model.buttonReleased(event.button, event.place);
    case OverlayEvent::Kind::keyPressed:
        return model.keyPressed(event.key, event.isShift, event.isControl, event.isRepeated);
    case OverlayEvent::Kind::uncovered:
        return m_session->put({event.area});
    case OverlayEvent::Kind::ended:
        m_hasEnded = true;
    }
}

void Capture::repaint(const SelectionModel &model, bool isWhole) {
    OverlayScene scene =
        OverlayScene::of(model, m_session->monitors(),
                         [this](const std::u32string &text, double scale) { return m_painter.labelSize(text, scale); });
    const auto areas = isWhole ? std::vector<QRect>{m_session->rect()} : changedAreas(m_scene, scene);
    if (areas.empty())
        return;
    m_scene = std::move(scene);
    for (const QRect &area : areas)
        m_painter.paint(m_session->canvas(), m_session->picture(), m_scene, area);
    m_session->put(areas);
}

int Capture::save(const QRect &area) {
    const auto stopped = [this] { return isStopped(); };
    const auto threads = static_cast<int>(std::thread::hardware_concurrency());
    const FilePieces pieces =
        encodePng(m_session->picture(), area, largestScale(m_session->monitors(), area), threads, stopped);
    if (pieces.empty())
        return noPicture;
    std::vector<std::string_view> bytes;
    for (const auto &piece : pieces)
        bytes.emplace_back(reinterpret_cast<const char *>(piece.data()), piece.size());
    if (const int error = writeWholeFile(m_line.file, bytes,
                                         {.rights = FileRights::ownerOnly, .isDurable = false, .isStopped = stopped})) {
        if (error != ECANCELED)
            complain(m_line.file + ": " + std::strerror(error));
        return noPicture;
    }
    if (!m_line.isSilent)
        playShutterSound();
    return 0;
}

} // namespace tavrine

#include "programs/screencapture/Capture.h"

#include "base/ErrorText.h"
#include "base/WholeFile.h"
#include "programs/screencapture/OverlayLoop.h"
#include "programs/screencapture/PngEncoder.h"
#include "programs/screencapture/ShutterSound.h"

#include <cerrno>
#include <cstdio>
#include <thread>

namespace tavrine {
namespace {

constexpr int noPicture = 1;

void complain(const std::string &what) {
    std::fprintf(stderr, "screencapture: %s\n", what.c_str());
}

} // namespace

int Capture::run() {
    if (const auto reason = whyNotWritable(m_line.file)) {
        complain(m_line.file + ": " + *reason);
        return noPicture;
    }
    m_screen = openFrozenScreen(m_line.picture);
    if (!m_screen) {
        complain("the screen cannot be read");
        return noPicture;
    }
    if (isStopped(m_stopDescriptor))
        return noPicture;
    showFirst();
    const auto area = letPersonChoose();
    m_screen->hide();
    if (!area)
        return noPicture;
    return save(*area);
}

void Capture::showFirst() {
    OverlayPainter::paintDimmed(m_screen->canvas(), m_screen->picture());
    m_screen->show();
    m_screen->tryGrabs();
}

std::optional<QRect> Capture::letPersonChoose() {
    const auto &monitors = m_screen->monitors();
    m_isAimKnown = m_screen->firstPointer().has_value();
    SelectionModel model(m_screen->rect(), m_screen->firstPointer().value_or(monitors.front().area.center()));
    std::vector<QRect> targets = m_screen->windows();
    for (const OverlayMonitor &monitor : monitors)
        targets.push_back(monitor.area);
    model.setTargets(std::move(targets));
    if (!m_screen->isOnePlane())
        for (const OverlayMonitor &monitor : monitors)
            model.addPlane(monitor.area);
    beginNarration(model);
    const bool isFinished = OverlayLoop(*m_screen, m_stopDescriptor)
                                .run({.handle = [&](const OverlayEvent &event) { handle(event, model); },
                                      .isFinished = [&] { return model.isFinished(); },
                                      .settle =
                                          [&] {
                                              if (const auto place = model.takePointerMove())
                                                  m_screen->movePointer(*place);
                                              repaint(model);
                                          }});
    return isFinished && model.state() == SelectionModel::State::accepted ? model.selection() : std::nullopt;
}

void Capture::beginNarration(const SelectionModel &model) {
    m_narration.emplace(m_screen->rect(), [this](const QRect &area) { return m_screen->cut(area).area.size(); });
    m_narration->begin();
    if (m_isAimKnown)
        m_narration->tell(model);
}

void Capture::handle(const OverlayEvent &event, SelectionModel &model) {
    handOn(event, model);
    m_narration->follow(event.kind, model);
}

void Capture::handOn(const OverlayEvent &event, SelectionModel &model) {
    m_isAimKnown = true;
    switch (event.kind) {
    case OverlayEvent::Kind::pointerMoved:
        return model.pointerMoved(event.place);
    case OverlayEvent::Kind::buttonPressed:
        return model.buttonPressed(event.button, event.place);
    case OverlayEvent::Kind::buttonReleased:
        return model.buttonReleased(event.button, event.place);
    case OverlayEvent::Kind::keyPressed:
        return model.keyPressed(event.key, event.isShift, event.isControl, event.isRepeated);
    default:
        return;
    }
}

void Capture::repaint(const SelectionModel &model) {
    if (!m_isAimKnown)
        return;
    OverlayScene scene = OverlayScene::of(
        model, m_screen->monitors(),
        [this](const std::u32string &text, double scale) { return m_painter.labelSize(text, scale); },
        [this](const QRect &area) { return m_screen->cut(area).area.size(); });
    const auto areas = changedAreas(m_scene, scene);
    if (areas.empty())
        return;
    m_scene = std::move(scene);
    for (const QRect &area : areas)
        m_painter.paint(m_screen->canvas(), m_screen->picture(), m_scene, area);
    m_screen->put(areas);
}

int Capture::save(const QRect &area) {
    const auto stopped = [this] { return isStopped(m_stopDescriptor); };
    const auto threads = static_cast<int>(std::thread::hardware_concurrency());
    const PictureCut cut = m_screen->cut(area);
    const FilePieces pieces =
        encodePng(cut.picture, cut.area, cut.fineness * largestScale(m_screen->monitors(), area), threads, stopped);
    if (pieces.empty())
        return noPicture;
    std::vector<std::string_view> bytes;
    for (const auto &piece : pieces)
        bytes.emplace_back(reinterpret_cast<const char *>(piece.data()), piece.size());
    if (const int error = writeWholeFile(m_line.file, bytes,
                                         {.rights = FileRights::ownerOnly, .isDurable = false, .isStopped = stopped})) {
        if (error != ECANCELED)
            complain(m_line.file + ": " + errorText(error));
        return noPicture;
    }
    if (!m_line.isSilent)
        playShutterSound();
    return 0;
}

} // namespace tavrine

#include "desktop/ShelfDragging.h"

namespace tavrine::testing {

using namespace std::chrono_literals;

Neighbour::Neighbour(const char *drags, const QString &list) {
    m_process.start(QStringLiteral(TAVRINE_CLIENTS "/gtk-drag"), {QStringLiteral("3"), QLatin1String(drags), list});
}

Neighbour::~Neighbour() {
    m_process.kill();
    m_process.waitForFinished();
}

bool Neighbour::says(const QByteArray &line, std::chrono::milliseconds limit) {
    return waitUntil([&] { return (m_said += m_process.readAllStandardOutput()).contains(line); }, limit);
}

bool ShelfDragging::comesToBeThere(Neighbour &neighbour) {
    return neighbour.says("ready", untilThere) && waitUntil(
                                                      [this] {
                                                          m_windows->refresh();
                                                          return m_windows->active() != nullptr;
                                                      },
                                                      untilThere);
}

bool ShelfDragging::putOnShelf(const QString &list, QPoint middle, QPoint top) {
    Neighbour neighbour("files", list);
    if (!comesToBeThere(neighbour))
        return false;
    const auto count = [this](const char *line) { return m_program.output().count(QLatin1String(line)); };
    // A slow program may have seen a drag come that was given up meanwhile.
    return waitUntil(
               [&] {
                   const auto entries = count("Drag entered!");
                   if (!dragUntil(middle, top, [&] { return count("Drag entered!") > entries; }))
                       return false;
                   m_hand.release();
                   return waitUntil([&] { return count("[NotchShelf] Found 1 file URLs") > 0; }, 5s);
               },
               untilThere) &&
           neighbour.says("dropped copy");
}

} // namespace tavrine::testing

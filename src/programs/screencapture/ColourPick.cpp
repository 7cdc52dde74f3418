#include "programs/screencapture/ColourPick.h"

#include "adapters/frozen/SamplerModel.h"
#include "adapters/frozen/SamplerPainter.h"
#include "programs/screencapture/OverlayLoop.h"

#include <cstdio>

namespace tavrine {
namespace {

void handle(const OverlayEvent &event, SamplerModel &model) {
    switch (event.kind) {
    case OverlayEvent::Kind::pointerMoved:
        return model.pointerMoved(event.place);
    case OverlayEvent::Kind::buttonPressed:
        return model.buttonPressed(event.button, event.place);
    case OverlayEvent::Kind::buttonReleased:
        return model.buttonReleased(event.button, event.place);
    case OverlayEvent::Kind::keyPressed:
        return model.keyPressed(event.key, event.isControl);
    default:
        return;
    }
}

} // namespace

int pickColour(int stopDescriptor) {
    const auto screen = openFrozenScreen();
    if (!screen) {
        std::fputs("screencapture: the screen cannot be read\n", stderr);
        return 1;
    }
    if (isStopped(stopDescriptor))
        return 1;
    bool isAimKnown = screen->firstPointer().has_value();
    SamplerModel model(screen->rect(), screen->firstPointer().value_or(screen->monitors().front().area.center()));
    SamplerPainter painter;
    SamplerPainter::paintPicture(*screen);
    screen->show();
    screen->tryGrabs();
    const bool isAnswered =
        OverlayLoop(*screen, stopDescriptor)
            .run({.handle =
                      [&](const OverlayEvent &event) {
                          isAimKnown = true;
                          handle(event, model);
                      },
                  .isFinished = [&] { return model.state() != SamplerModel::State::aiming; },
                  .settle =
                      [&] {
                          if (const auto place = model.takePointerMove())
                              screen->movePointer(*place);
                          if (!isAimKnown)
                              return;
                          if (const auto areas = painter.moveTo(*screen, model.pixel()); !areas.empty())
                              screen->put(areas);
                      }});
    screen->hide();
    if (!isAnswered || model.state() != SamplerModel::State::taken)
        return 1;
    for (const char32_t letter : colourValue(screen->picture().at(model.pixel())))
        std::putchar(static_cast<int>(letter));
    std::putchar('\n');
    return std::fflush(stdout) == 0 ? 0 : 1;
}

} // namespace tavrine

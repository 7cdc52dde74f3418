#pragma once

#include "adapters/fake/FakeDragPasteboard.h"
#include "adapters/fake/FakeEdgeWindow.h"
#include "adapters/fake/FakeEventMonitors.h"
#include "adapters/fake/FakeScreens.h"
#include "adapters/fake/FakeSessionNotices.h"
#include "shelf/NotchWindowController.h"
#include "shelf/ShelfTest.h"

namespace tavrine {

/// A screen of 1440 by 900: the band is at 570 to 870, hovering from 560 to 880 and from 897 upwards.
class NotchWindow : public ShelfTest {
protected:
    NotchWindow() { make(); }
    ~NotchWindow() override { controller.reset(); }

    void make() {
        controller = std::make_unique<NotchWindowController>(
            NotchWindowController::Ports{.model = modelPorts(),
                                         .screens = screens,
                                         .eventMonitors = monitors,
                                         .edgeWindows = windows,
                                         .dragPasteboards = drags,
                                         .sessionNotices = notices},
            NotchWindowController::Views{.content =
                                             [this](NotchViewModel &, std::function<void()> dismiss) {
                                                 leave = std::move(dismiss);
                                                 return nullptr;
                                             },
                                         .outline = {}});
        controller->showWindow();
        time.advance(60ms); // the first look at the model
    }

    [[nodiscard]] NotchViewModel &model() { return controller->viewModel(); }
    [[nodiscard]] FakeEdgeWindows::Window &window() { return *windows.windows().front(); }

    void hold(int count) {
        for (int index = 0; index < count; ++index)
            model().addText(QString::number(index));
        time.advance(100ms);
    }
    void point(double x, double y) {
        screens.setMouseLocation({x, y});
        time.advance(100ms);
    }
    /// A stroke with the button down: what is dragged, and its first step.
    void beginDrag(bool holdsFiles) {
        screens.setPressedMouseButtons(1);
        drags.begin(holdsFiles);
        monitors.mouse(eventMask::leftMouseDragged);
    }
    void release() {
        screens.setPressedMouseButtons(0);
        drags.end();
        monitors.mouse(eventMask::leftMouseUp);
    }
    void setScreens(std::initializer_list<quint32> numbers) {
        QList<Screen> list;
        double x = 0;
        for (const quint32 number : numbers) {
            list << Screen{.number = number,
                           .localizedName = QStringLiteral("Screen %1").arg(number),
                           .frame = QRectF(x, 0, 1000, 800),
                           .visibleFrame = QRectF(x, 0, 1000, 770)};
            x += 1000;
        }
        screens.setScreens(list);
        time.advance(100ms);
    }

    FakeScreens screens;
    FakeEventMonitors monitors;
    FakeEdgeWindows windows;
    FakeDragPasteboards drags{time};
    FakeSessionNotices notices{time};
    std::function<void()> leave;
    std::unique_ptr<NotchWindowController> controller;
};

inline constexpr QRectF atRest(570, 876, 300, 24);

} // namespace tavrine

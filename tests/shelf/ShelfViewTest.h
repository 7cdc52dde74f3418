#pragma once

#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeDragging.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "look/Look.h"
#include "shelf/DropDetectionView.h"
#include "shelf/NotchShelfView.h"
#include "shelf/ShelfItemDragSourceView.h"
#include "shelf/ShelfRowView.h"
#include "shelf/ShelfTest.h"

#include <QTest>

namespace tavrine {

using Tile = ShelfItemDragSourceView;
inline constexpr QPoint middle(Tile::slotWidth / 2, 40); ///< of a tile's picture

/// The shelf's window content over fakes, as large as the window is when it shows items.
class ShelfViewTest : public ShelfTest {
protected:
    static constexpr QSize open{300, 224};
    static constexpr QSize wide{550, 224};

    ShelfViewTest() {
        view.setContent(shelf);
        view.resize(open);
        view.show();
        static_cast<void>(QTest::qWaitForWindowActive(&view));
        static_cast<void>(row()); // made at its first use, and here before the items come
    }
    [[nodiscard]] ShelfRowView &row() const { return shelf->row(); }
    /// What shows, from the left.
    [[nodiscard]] std::vector<ShelfItemDragSourceView *> tiles() const {
        std::vector<ShelfItemDragSourceView *> shown;
        for (auto *tile : row().findChildren<ShelfItemDragSourceView *>())
            if (tile->isVisible())
                shown.push_back(tile);
        std::sort(shown.begin(), shown.end(), [](const auto *a, const auto *b) { return a->x() < b->x(); });
        return shown;
    }
    [[nodiscard]] ShelfItemDragSourceView &tile(size_t index = 0) const { return *tiles().at(index); }
    void addFiles(int count) {
        for (int i = 0; i < count; ++i)
            model.addFile(QUrl::fromLocalFile(QStringLiteral("/home/ada/file %1.txt").arg(i)));
        time.runPending();
        if (count > 6)
            view.resize(wide);
        model.setHovering(true);
        rest();
    }
    /// Everything that moves is where it goes.
    void rest() { time.advance(2s); }
    void hover(QWidget &widget, QPointF place) {
        QEnterEvent enter(place, place, widget.mapToGlobal(place));
        QCoreApplication::sendEvent(&widget, &enter);
        QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, Qt::NoButton, {});
        QCoreApplication::sendEvent(&widget, &move);
    }
    /// A press, a move with the button held, and no release.
    void pull(QWidget &widget, QPoint from, QPointF to) {
        QTest::mousePress(&widget, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, widget.mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&widget, &move);
    }

    FakeAppearance appearance;
    look::Look look{time, &appearance};
    FakeDragging dragging{time};
    FakePasteboard pasteboard;
    FakeUrlOpener urls;
    int dismissals = 0;
    NotchViewModel model{modelPorts()};
    DropDetectionView view{model, time, dragging};
    NotchShelfView *shelf =
        new NotchShelfView(model, {time, icons, dragging, pasteboard, urls}, [this] { ++dismissals; });
};

} // namespace tavrine

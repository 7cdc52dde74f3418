// Shows the look: every primitive in both themes, side by side.
#include "adapters/linux/PortalAppearance.h"
#include "adapters/linux/QtTime.h"
#include "gallery/Gallery.h"
#include "look/Look.h"
#include "look/PanelSurface.h"
#include "look/Shadow.h"
#include "look/Text.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPainter>

using namespace tavrine;
using namespace tavrine::look;

namespace {

/// A desktop's ground, under panels that are part of the page rather than windows.
class Ground final : public QWidget {
public:
    explicit Ground(bool isDark) {
        setAutoFillBackground(true);
        QPalette ground;
        ground.setColor(QPalette::Window, isDark ? QColor(0x12, 0x14, 0x1A) : QColor(0xD8, 0xDE, 0xE8));
        setPalette(ground);
    }
};

/// A panel with its shadow round it.
class Framed final : public QWidget {
public:
    Framed(QSize panel, QWidget *content, QWidget *parent) : QWidget(parent) {
        resize(panel.grownBy(shadowMargins));
        auto *around = new QHBoxLayout(this);
        around->setContentsMargins(shadowMargins);
        auto *surface = new PanelSurface;
        around->addWidget(surface);
        auto *within = new QHBoxLayout(surface);
        within->setContentsMargins(0, 0, 0, 0);
        within->addWidget(content);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        paintPanelShadow(painter, QRectF(rect()).marginsRemoved(shadowMargins), themeOf(this));
    }
};

QWidget *panels(int rows, bool isDark) {
    auto *ground = new Ground(isDark);
    for (int i = 0; i < 2; ++i) {
        auto *frame =
            new Framed(i == 0 ? QSize(680, 500) : QSize(320, 450), new SamplePanel(i == 0 ? rows : 0), ground);
        frame->move(i == 0 ? 4 : 90, i == 0 ? 4 : 540);
    }
    return ground;
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QtTime time;
    PortalAppearance appearance(QDBusConnection::sessionBus());
    Look look(time, &appearance);
    look.setCompositing(true);

    const QString page = application.arguments().value(1, QStringLiteral("controls"));
    QWidget window;
    auto *layout = new QHBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (const bool isDark : {false, true}) {
        QWidget *side = nullptr;
        if (page == QLatin1String("symbols"))
            side = new SymbolPage;
        else if (page == QLatin1String("panels"))
            side = panels(1000, isDark);
        else
            side = new Gallery;
        look.setTheme(side, isDark ? darkTheme() : lightTheme());
        layout->addWidget(side, 1);
    }
    window.resize(page == QLatin1String("panels") ? QSize(1530, 1060) : QSize(1240, 900));
    window.setWindowTitle(QStringLiteral("Gallery"));
    window.move(0, 0);
    window.show();
    return application.exec();
}

#include "look/SoftChange.h"

#include "look/Look.h"

#include <QPainter>
#include <QPixmap>
#include <QWidget>

namespace tavrine::look {
namespace {

constexpr Seconds length{0.15};

/// How a widget was, with what lies behind it, over how it is.
class Former final : public QWidget {
public:
    explicit Former(QWidget &widget)
        : QWidget(&widget), m_picture(widget.window()->grab({widget.mapTo(widget.window(), QPoint()), widget.size()})) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        resize(widget.size());
        m_motion.start(
            length, easeOut,
            [this](double part) {
                m_part = part;
                update();
            },
            [this] { end(); });
        show();
    }
    void end() {
        hide();
        deleteLater();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.setOpacity(1 - m_part);
        painter.drawPixmap(0, 0, m_picture);
    }

private:
    QPixmap m_picture;
    Motion m_motion;
    double m_part = 0;
};

} // namespace

void changeSoftly(QWidget &widget) {
    if (!Look::moves() || !widget.isVisible())
        return;
    const auto children = widget.children();
    auto *former = new Former(widget); // with what is left of another
    for (QObject *child : children)
        if (auto *another = dynamic_cast<Former *>(child); another && another != former)
            another->end();
}

} // namespace tavrine::look

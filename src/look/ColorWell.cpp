#include "look/ColorWell.h"

#include "look/FittingWindow.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QColorDialog>
#include <QPainter>

namespace tavrine::look {
namespace {

constexpr int wellWidth = 44;

} // namespace

ColorWell::ColorWell(QWidget *parent) : Control(parent) {
    connect(this, &QAbstractButton::clicked, this, &ColorWell::ask);
}

void ColorWell::setColor(const QColor &color) {
    m_color = color;
    setAccessibleDescription(color.name().toUpper());
    update();
}

QSize ColorWell::sizeHint() const {
    return {wellWidth, height::control};
}

void ColorWell::paint(QPainter &painter) {
    fillRounded(painter, rect(), radius::control, ground(theme().control));
    const QRectF inside = QRectF(rect()).adjusted(4, 4, -4, -4);
    fillRounded(painter, inside, radius::badge, m_color);
    strokeHairline(painter, inside, radius::badge, theme().outline);
}

void ColorWell::ask() {
    auto *dialog = findChild<QColorDialog *>();
    if (!dialog) {
        dialog = new QColorDialog(m_color, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        // The desktop's own dialog would be another program's window, which nothing here could fit to the screen.
        dialog->setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::NoButtons);
        fitToScreen(*dialog);
        connect(dialog, &QColorDialog::currentColorChanged, this, [this](const QColor &color) {
            setColor(color);
            Q_EMIT chosen(color);
        });
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace tavrine::look

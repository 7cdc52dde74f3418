#include "capture/editor/AnnotationThicknessPanel.h"

#include "base/DesktopWords.h"
#include "capture/editor/DrawingTool.h"
#include "look/Control.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrine {
namespace {

constexpr QSize choiceSize{168, 36};
constexpr qreal sampleWidth = 56;

class ThicknessChoice final : public look::Control {
public:
    explicit ThicknessChoice(const AnnotationThicknessEntry &entry) : m_lineWidth(entry.lineWidth) {
        setText(inDesktopWords(QStringView(entry.label).toString()));
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        setFixedSize(choiceSize);
    }

protected:
    void paint(QPainter &painter) override {
        const QRectF body = rect();
        const bool isChosen = isChecked();
        look::fillRounded(painter, body, look::radius::control,
                          ground(isChosen ? theme().accent : QColor(Qt::transparent)));
        const QColor ink = isChosen ? theme().onAccent : theme().text;
        const qreal left = body.left() + look::space::medium;
        look::fillRounded(painter, QRectF(left, body.center().y() - m_lineWidth / 2, sampleWidth, m_lineWidth),
                          m_lineWidth / 2, ink);
        const qreal words = left + sampleWidth + look::space::medium;
        look::paintLine(painter, QRectF(words, body.top(), body.right() - words, body.height()), text(),
                        look::TextRole::body, ink);
    }

private:
    double m_lineWidth;
};

} // namespace

AnnotationThicknessPanel::AnnotationThicknessPanel(QWidget *anchor, AnnotationThickness chosen,
                                                   std::function<void(AnnotationThickness)> choose)
    : PopoverPanel(anchor), m_chosen(chosen) {
    setAccessibleName(inDesktopWords(QStringLiteral("Thickness")));
    auto *list = new QWidget(this);
    auto *rows = new QVBoxLayout(list);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(look::space::hair);
    for (const AnnotationThicknessEntry &entry : annotationThicknesses) {
        auto *choice = new ThicknessChoice(entry);
        choice->setChecked(entry.thickness == chosen);
        connect(choice, &QAbstractButton::clicked, this, [this, choose, thickness = entry.thickness] {
            choose(thickness);
            close();
        });
        rows->addWidget(choice);
        m_choices.push_back(choice);
    }
    setContent(list);
}

void AnnotationThicknessPanel::showEvent(QShowEvent *event) {
    PopoverPanel::showEvent(event);
    const auto at = static_cast<size_t>(m_chosen);
    m_choices[std::min(at, m_choices.size() - 1)]->setFocus(Qt::OtherFocusReason);
}

void AnnotationThicknessPanel::keyPressEvent(QKeyEvent *event) {
    const int step = event->key() == Qt::Key_Down ? 1 : event->key() == Qt::Key_Up ? -1 : 0;
    if (step == 0)
        return PopoverPanel::keyPressEvent(event);
    const auto now =
        std::find_if(m_choices.begin(), m_choices.end(), [](QWidget *choice) { return choice->hasFocus(); });
    const auto count = static_cast<int>(m_choices.size());
    const int at = now == m_choices.end() ? 0 : static_cast<int>(now - m_choices.begin());
    m_choices[static_cast<size_t>((at + step + count) % count)]->setFocus(Qt::TabFocusReason);
}

} // namespace tavrine

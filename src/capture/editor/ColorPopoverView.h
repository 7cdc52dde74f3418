#pragma once

#include "look/PopoverPanel.h"

#include <QColor>
#include <QPointer>

namespace tavrine {

class EditorModel;

/// The colours that annotations are drawn in: the presets, and a well for any other.
class ColorPopoverView : public PopoverPanel {
    Q_OBJECT

public:
    /// The model outlives the view.
    ColorPopoverView(EditorModel &model, QWidget *anchor);

private:
    void choose(const QColor &color);
    void chooseCustom();

    EditorModel &m_model;
    QPointer<QWidget> m_window; ///< of the anchor
};

/// A colour as a disc, with a ring round it while it is the chosen one. Paints within `rect`.
void paintSwatch(QPainter &painter, const QRectF &rect, const QColor &color, bool isChosen, const QWidget *widget);

} // namespace tavrine

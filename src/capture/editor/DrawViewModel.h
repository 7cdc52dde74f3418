#pragma once

#include "capture/editor/DrawingCanvas.h"

#include <QRectF>

#include <optional>

namespace tavrine {

/// The gestures on the canvas and the text being typed there, fed with points and free of windows. Owned by `DrawView`;
/// main thread only.
///
///  1. Points are in the view's coordinates, the origin at the top left. Points outside the view are points like
///     others; one that is no number is passed over, and while the view has no area the mouse does nothing.
///  2. A gesture runs from `mouseDown` to `mouseUp`. Its annotation is written when it ends.
///  3. While something is typed, its annotation is among the drawings already and changes with each letter. A model
///     that is destroyed leaves the drawings as they are then.
///  4. The gesture and the field stay where they are on the picture when the view gets another size.
class DrawViewModel {
public:
    /// The field that an annotation is typed into.
    struct TextField {
        QPointF origin; ///< its upper left corner
        QColor textColor;
        double lineWidth = 3.0; ///< its letters' size goes by it
        QString string;
        bool operator==(const TextField &) const = default;
    };
    /// What a key means to the field.
    enum class Command { insertNewline, cancelOperation, other };

    /// What the view does when asked. All may be left empty.
    struct View {
        std::function<void(const QRectF &area)> redrawGesture; ///< the gesture looks different within the area
        std::function<void()> drawingsChanged;
        std::function<void(const TextField &)> showTextField; ///< and gives it the keyboard
        std::function<void()> removeTextField;
        std::function<void()> makeFirstResponder; ///< the view itself takes the keyboard
        std::function<void(const QPointF &origin)> moveTextField = {};
    };

    DrawViewModel() = default;
    explicit DrawViewModel(View view) : m_view(std::move(view)) {}

    /// The gesture under way and the text being typed go on.
    void setParent(std::optional<DrawingCanvas> parent) { m_parent = std::move(parent); }
    [[nodiscard]] const std::optional<DrawingCanvas> &parent() const { return m_parent; }
    void setBounds(const QSizeF &bounds);
    [[nodiscard]] const QSizeF &bounds() const { return m_bounds; }

    void mouseDown(const QPointF &point);
    void mouseDragged(const QPointF &point);
    void mouseUp();

    void controlTextDidChange(const QString &string);
    void controlTextDidEndEditing();
    /// True when the key is answered for.
    bool doCommand(Command command);

    void eraseAt(const QPointF &point);
    void beginText(const QPointF &point);
    void placeStamp(const QPointF &point);
    void updateActiveText(const QString &string);
    void commitActiveText();
    void commitCurrentPath(const DrawingCanvas &canvas);
    void writeDrawings(std::vector<DrawingPath> drawings); ///< only with a parent

    [[nodiscard]] const std::vector<QPointF> &currentPoints() const { return m_currentPoints; }
    [[nodiscard]] const std::optional<TextField> &activeTextField() const { return m_activeTextField; }
    [[nodiscard]] const std::optional<QString> &activeTextID() const { return m_activeTextID; }
    /// The gesture under way as an annotation whose points are those of the view; none while there is none.
    [[nodiscard]] std::optional<DrawingPath> gesture() const;

private:
    [[nodiscard]] bool canDraw(const QPointF &point) const;
    [[nodiscard]] QPointF normalised(const QPointF &point) const;
    [[nodiscard]] QRectF gestureArea() const;
    void redrawGesture(const QRectF &area);
    void append(DrawingPath path);

    View m_view;
    std::optional<DrawingCanvas> m_parent;
    QSizeF m_bounds;
    std::vector<QPointF> m_currentPoints;
    bool m_hasEndedTyping = false; ///< the button that is held did so, and does nothing else
    std::optional<TextField> m_activeTextField;
    std::optional<QString> m_activeTextID;
};

} // namespace tavrine
